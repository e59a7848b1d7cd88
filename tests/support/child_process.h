// Running a program as a user does, and seeing all that it gives back.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korva::test {

/// What a program is started with, all text in UTF-8. Signals act on it as by default, whatever the test was
/// started with.
struct Launch {
    std::string program{};
    std::vector<std::string> arguments{};
    std::map<std::string, std::string> environment{};  ///< Beside the test's own.
    std::string input{};                               ///< What it reads from standard input, up to 64 KiB.
    bool inputStaysOpen = false;                       ///< It can be given more, see `ChildProcess::say`.

    // On Linux only:
    std::string outputPath{};          ///< Where its standard output goes; empty: to the test.
    std::vector<int> closedStreams{};  ///< Of the standard three.
    std::vector<int> ignoredSignals{};
    bool errorIsTerminal = false;
    bool obeysPermissions = false;  ///< As a common user does, even if the test is run by the administrator.
    std::optional<std::uint64_t> fileSizeLimit{};  ///< Bytes that a file may grow to.
};

struct Outcome {
    int exitCode = -1;  ///< -1 when a signal ended it.
    int signal = 0;
    std::string output;
    std::string error;
};

/// A program that runs beside the test. Ended and collected with this object.
class ChildProcess {
public:
    explicit ChildProcess(const Launch& launch);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// To other systems than Linux: what Ctrl-Break does there, whatever the signal.
    void send(int signal) const;

    /// Gives it `text` to read, and waits until it has read so much that the rest fits into the pipe.
    void say(std::string_view text);
    /// Lets nobody read its standard output any more.
    void closeOutput();

    /// Waits until standard error has `text`. False if the program ends without, or after a minute.
    [[nodiscard]] bool waitForError(std::string_view text);
    /// The same for standard output.
    [[nodiscard]] bool waitForOutput(std::string_view text);

    /// Waits for the end. A program that takes more than a minute is killed.
    [[nodiscard]] Outcome wait();

private:
    bool readMore();
    bool waitForText(const std::string& stream, std::string_view text);

    struct Ends;
    std::unique_ptr<Ends> ends;
    Outcome outcome;
};

[[nodiscard]] Outcome run(const Launch& launch);

}  // namespace korva::test
