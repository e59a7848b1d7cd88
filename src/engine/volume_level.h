// How loud a volume is.
#pragma once

namespace korva::engine {

/// The level of a volume from 0.0 to 1.0 in dB, 20 log10 of it; -130 at the least, and for what has no
/// logarithm.  [any]
[[nodiscard]] float volumeDb(float scalar) noexcept;

}  // namespace korva::engine
