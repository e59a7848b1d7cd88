// Running a program as a user does, and seeing all that it gives back.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korva::test {

/// What a program is started with. Signals act on it as by default, whatever the test was started with.
struct Launch {
    std::string program{};
    std::vector<std::string> arguments{};
    std::map<std::string, std::string> environment{};  ///< Beside the test's own.
    std::string input{};                               ///< What it reads from standard input, up to 64 KiB.
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

    void send(int signal) const;

    /// Waits until standard error has `text`. False if the program ends without, or after a minute.
    [[nodiscard]] bool waitForError(std::string_view text);
    /// The same for standard output.
    [[nodiscard]] bool waitForOutput(std::string_view text);

    /// Waits for the end. A program that takes more than a minute is killed.
    [[nodiscard]] Outcome wait();

private:
    bool readMore();
    bool waitForText(const std::string& stream, std::string_view text);

    pid_t process = -1;
    int outputEnd = -1;
    int errorEnd = -1;
    Outcome outcome;
};

[[nodiscard]] Outcome run(const Launch& launch);

}  // namespace korva::test
