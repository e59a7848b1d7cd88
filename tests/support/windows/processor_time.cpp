#include "tests/support/processor_time.h"

#include <windows.h>

namespace korva::test {
namespace {

std::int64_t millisecondsOf(const FILETIME& time) {
    const std::uint64_t hundredNanoseconds = (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
    return static_cast<std::int64_t>(hundredNanoseconds / 10'000);
}

}  // namespace

std::int64_t processorTimeMs() {
    FILETIME created{};
    FILETIME ended{};
    FILETIME inSystem{};
    FILETIME inProgram{};
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &inSystem, &inProgram);
    return millisecondsOf(inSystem) + millisecondsOf(inProgram);
}

}  // namespace korva::test
