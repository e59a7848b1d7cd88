// The time since this process began: the time base of load times and byte counters.
#pragma once

#include <cstdint>

namespace korva::platform {

/// Wall-clock milliseconds since the process began. Runs on while the process sleeps, never backwards;
/// processor time, which `clock()` gives on some systems, is not meant.  [any]
std::uint64_t processClockMs() noexcept;

}  // namespace korva::platform
