// Processing calls while something goes on beside them, and the same calls while nothing does.
#pragma once

#include <functional>
#include <string>

#include "bench/engine/core_rig.h"

namespace korva::bench {

/// The 99th percentile of the durations of calls, in seconds.
struct CallPercentiles {
    double quiet = 0.0;
    double disturbed = 0.0;
};

/// Both are measured in one go, in turns of a tenth of a second, so that whatever else the machine does meets
/// both. The audio thread has the first processor and real-time priority (where it may), and calls once a
/// millisecond, ten times as often as its buffers last; it sleeps in between, as an audio engine's does.
/// `begin` comes before a disturbed turn and `end` after it.
[[nodiscard]] CallPercentiles measureCallTurns(rt::RtProcessor& processor, const std::function<void()>& begin,
                                               const std::function<void()>& end);

/// Registers the cases "name/quiet" and "name/`disturbance`": each takes its half of what `measure` gives,
/// which is called by the first of the two that comes.
void registerCallTurns(const std::string& name, const std::string& disturbance,
                       const std::function<CallPercentiles()>& measure);

}  // namespace korva::bench
