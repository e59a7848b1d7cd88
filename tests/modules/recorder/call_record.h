// One line of the recording module's log.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace korva::recorder {

/// One call, from its beginning to the end of this object, which adds the call to the file that
/// KORVA_RECORDER_LOG names: a line of `name=value` words without blanks, so that another program can read
/// it. Without the variable it does nothing.
///
/// Each line has `function`, `module`, `process`, `thread`, `begin` and `end` (nanoseconds of the monotonic
/// clock), and `instance`: the address of the instance, 0 for a call without one.
class CallRecord {
public:
    CallRecord(const char* function, const void* instance);
    ~CallRecord();
    CallRecord(const CallRecord&) = delete;
    CallRecord& operator=(const CallRecord&) = delete;

    void instanceIs(const void* made) noexcept { instance = made; }
    void number(const char* name, std::int64_t value);
    /// `null`, or the bytes as hexadecimal digits.
    void bytes(const char* name, const void* data, std::size_t size);

private:
    const std::string log;
    const std::int64_t begin;
    const void* instance;
    std::string line;
};

}  // namespace korva::recorder
