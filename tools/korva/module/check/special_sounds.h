// Sounds that bring a module out of step.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "korva/module/check/sound.h"

namespace korva::tool {

struct SpecialSound {
    std::string name{};
    Sound sound{};
    bool isUsual = true;  ///< Up to full scale: what comes of it has to be numbers.
};

/// Sounds of `frames` on these planes.
[[nodiscard]] std::vector<SpecialSound> specialSounds(unsigned planes, std::size_t frames,
                                                      std::uint32_t seed);

}  // namespace korva::tool
