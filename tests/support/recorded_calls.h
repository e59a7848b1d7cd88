// What the recording module (tests/modules/recorder) has seen of a host.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/environment.h"
#include "tests/support/own_folder.h"

namespace korva::test {

/// One call of a function of the module, as the log has it.
struct RecordedCall {
    /// The export's name without its prefix; `process`, `capture`, `isHardwareAvailable` and `unused` for
    /// entries of the instance's table; `Load` and `Unload` for the library itself.
    std::string function;
    std::string module;         ///< Name of the library's file, without suffix.
    int instance = 0;           ///< 1 is the first that was made in this log; 0 for a call without one.
    std::uint64_t process = 0;  ///< Numbers of the system's.
    std::uint64_t thread = 0;
    std::int64_t beginNs = 0;  ///< Of the monotonic clock.
    std::int64_t endNs = 0;
    std::map<std::string, std::string> words;  ///< All the others of the line, as they are written.

    /// An argument, or a result; raises `std::out_of_range` for one that the function doesn't have.
    [[nodiscard]] std::int64_t number(const std::string& name) const;
    /// None for a null pointer.
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> bytes(const std::string& name) const;
    [[nodiscard]] std::string text(const std::string& name) const;
    /// The samples of a plane that a block's record has.
    [[nodiscard]] std::vector<float> plane(int number) const;
};

/// All calls of a log, in the order in which they ended; none if the file isn't there.
[[nodiscard]] std::vector<RecordedCall> readRecordedCalls(const std::filesystem::path& log);

/// Those of one function.
[[nodiscard]] std::vector<RecordedCall> callsOf(std::string_view function,
                                                const std::vector<RecordedCall>& calls);

/// The functions' names in their order.
[[nodiscard]] std::vector<std::string> functionsOf(const std::vector<RecordedCall>& calls);

/// While it lives, the module records in this process and in those that it starts.
class Recording {
public:
    /// The module's first answers, as its source lists them.
    explicit Recording(const std::string& answers = {});

    /// Takes the place of all answers there were; the next call is answered so.
    void answer(const std::string& answers) { answerList.set(answers); }

    /// How many samples of each plane a block's record has; 8 at first.
    void noteSamples(int count) { sampleCount.set(std::to_string(count)); }

    [[nodiscard]] std::vector<RecordedCall> calls() const { return readRecordedCalls(log()); }
    [[nodiscard]] std::filesystem::path log() const { return folder.path() / "calls"; }

private:
    OwnFolder folder;
    EnvironmentVariable logFile;
    EnvironmentVariable answerList;
    EnvironmentVariable sampleCount;
};

}  // namespace korva::test
