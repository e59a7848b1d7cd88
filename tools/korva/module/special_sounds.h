// Sounds that bring a module out of step.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "korva/module/sound.h"

namespace korva::tool {

struct SpecialSound {
    std::string name{};
    Sound sound{};
    bool isFinite = true;
    bool isLoud = false;  ///< Beyond what a module has to bring through as numbers.
};

/// Sounds of `frames` on these planes.
[[nodiscard]] std::vector<SpecialSound> specialSounds(unsigned planes, std::size_t frames,
                                                      std::uint32_t seed);

}  // namespace korva::tool
