// A stream's format as the audio engine tells it, and as the real-time path and modules take it.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "platform/published/audio_records.h"
#include "rt/engine_format.h"

namespace korva::engine {

/// The whole number that is nearest to a rate, halves up. 0 for what is no number or below 0; the greatest
/// for what is beyond it.  [any]
[[nodiscard]] constexpr std::uint32_t wholeRate(float framesPerSecond) noexcept {
    // A conversion of what doesn't fit is undefined, and a host's rate may be any float: the limits come
    // first. A double holds them exactly, and its sum is not rounded up to the next whole number.
    constexpr double greatest = std::numeric_limits<std::uint32_t>::max();
    if (!(framesPerSecond > 0)) {
        return 0;
    }
    return static_cast<std::uint32_t>(std::min(static_cast<double>(framesPerSecond) + 0.5, greatest));
}

/// The format's record, with its mask mended. Its encoding is not looked at; more channels than a record can
/// count are as many as it can.  [any]
[[nodiscard]] rt::EngineFormat engineFormatOf(const published::UNCOMPRESSEDAUDIOFORMAT& format) noexcept;

/// 32-bit floats with the record's channels, rate and mask.  [any]
[[nodiscard]] published::UNCOMPRESSEDAUDIOFORMAT floatFormatOf(const rt::EngineFormat& format) noexcept;

}  // namespace korva::engine
