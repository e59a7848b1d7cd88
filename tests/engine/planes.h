// Eight planes of sound.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "korva/dsp_module.h"

namespace korva::test {

/// Planes that are all of one value at first, and blocks over them.
class Planes {
public:
    explicit Planes(float value) {
        for (std::size_t plane = 0; plane < samples.size(); ++plane) {
            samples[plane].fill(value);
            pointers[plane] = samples[plane].data();
        }
    }

    /// A record of the module interface or of the real-time path, from stereo to 5.1.
    template <class Block>
    [[nodiscard]] Block block(std::uint32_t frames) const {
        return {pointers.data(), KORVA_PLANES, KORVA_BLOCK_FRAMES, 2, 6, frames, 0};
    }

    std::array<std::array<float, KORVA_BLOCK_FRAMES>, KORVA_PLANES> samples{};

private:
    std::array<float*, KORVA_PLANES> pointers{};
};

}  // namespace korva::test
