// Which streams the equaliser works on: up to eight channels at 8 to 384 kHz, the same on both sides. It
// folds nothing and converts no rate, and while it is in place nobody else does.
#pragma once

#include <cstdint>

#include "korva/dsp_module.h"

namespace equaliser {

/// A format test of either side; changes `requested` to what would do.
[[nodiscard]] std::uint32_t testFormat(EngineFormat& requested, const EngineFormat& opposite);

/// Whether a stream of these two can be started.
[[nodiscard]] bool fitTogether(const EngineFormat& in, const EngineFormat& out);

}  // namespace equaliser
