// What a wave format says, whether it agrees with itself, and the wave format of a stream.
//
// A function that takes a `WAVEFORMATEX` reads all the bytes that `sizeOf` tells.
#pragma once

#include <cstddef>
#include <optional>

#include "platform/published/audio_interfaces.h"

namespace korva::engine {

/// Bytes of the format together with what follows its 18. After PCM's nothing counts, whatever `cbSize` says.
/// [any]
[[nodiscard]] std::size_t sizeOf(const WAVEFORMATEX& format) noexcept;

/// What the samples are: the subformat of an extensible format, else the encoding that belongs to the tag. An
/// extensible format without room for a subformat counts as one of an unknown tag, here and below.  [any]
[[nodiscard]] GUID encodingOf(const WAVEFORMATEX& format) noexcept;

/// Whether it is of some tag, and neither of PCM nor of floats.  [any]
[[nodiscard]] bool isCompressed(const WAVEFORMATEX& format) noexcept;

/// Whether the numbers of a format of PCM or floats agree, and those of an extensible one. What others mean
/// by theirs isn't known, so they pass.  [any]
[[nodiscard]] bool isConsistent(const WAVEFORMATEX& format) noexcept;

/// The stream that the format is of. The mask is 0 unless the format is extensible.  [any]
[[nodiscard]] published::UNCOMPRESSEDAUDIOFORMAT uncompressedOf(const WAVEFORMATEX& format) noexcept;

/// The stream's wave format: a plain one (`cbSize` 0, and of no use behind that) where that says it all, else
/// an extensible one. The rate is the nearest whole one, bytes per second at most what their field holds.
/// None for more channels or bits than the fields of a wave format hold.  [any]
[[nodiscard]] std::optional<WAVEFORMATEXTENSIBLE> waveFormatOf(
    const published::UNCOMPRESSEDAUDIOFORMAT& format) noexcept;

}  // namespace korva::engine
