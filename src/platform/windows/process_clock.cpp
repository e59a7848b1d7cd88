#include "platform/process_clock.h"

#include <windows.h>

namespace korva::platform {
namespace {

std::uint64_t milliseconds(const FILETIME& time) {
    return ((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime) / 10000;
}

/// The creation time is known on the calendar clock only, which users may set. So its distance is taken
/// once, and carried over to the clock that counts from the system's start.
std::uint64_t startOnTickClock() {
    FILETIME creation{};
    FILETIME unused{};
    FILETIME now{};
    GetProcessTimes(GetCurrentProcess(), &creation, &unused, &unused, &unused);
    GetSystemTimeAsFileTime(&now);
    const std::uint64_t ticks = GetTickCount64();
    const std::uint64_t age = milliseconds(now) - milliseconds(creation);
    // Somebody may have set the calendar clock back meanwhile: then the clock counts from its first use.
    return age <= ticks ? ticks - age : ticks;
}

}  // namespace

std::uint64_t processClockMs() noexcept {
    static const std::uint64_t start = startOnTickClock();
    return GetTickCount64() - start;
}

}  // namespace korva::platform
