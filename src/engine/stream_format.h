// A stream's format as the audio engine tells it, and as the real-time path and modules take it.
#pragma once

#include <cstdint>

#include "platform/published/audio_records.h"
#include "rt/engine_format.h"

namespace korva::engine {

/// The whole number that is nearest to a rate, halves up. 0 for what is no number or below 0; the greatest
/// for what is beyond it.  [any]
[[nodiscard]] std::uint32_t wholeRate(float framesPerSecond) noexcept;

/// The format's record, with its mask mended. Its encoding is not looked at; more channels than a record can
/// count are as many as it can.  [any]
[[nodiscard]] rt::EngineFormat engineFormatOf(const published::UNCOMPRESSEDAUDIOFORMAT& format) noexcept;

/// 32-bit floats with the record's channels, rate and mask.  [any]
[[nodiscard]] published::UNCOMPRESSEDAUDIOFORMAT floatFormatOf(const rt::EngineFormat& format) noexcept;

}  // namespace korva::engine
