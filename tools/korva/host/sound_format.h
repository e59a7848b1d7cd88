// What a stream's format is made of.
#pragma once

#include <cstdint>

namespace korva::tool {

/// A stream's format. Samples are 32-bit floats; channels stand in the published order, lowest speaker bit
/// first.
struct SoundFormat {
    std::uint32_t sampleRate;  ///< Frames per second.
    std::uint32_t channels;    ///< 1 to 8.
    std::uint32_t mask;        ///< Speaker bits; 0 where none are known.

    bool operator==(const SoundFormat&) const = default;
};

}  // namespace korva::tool
