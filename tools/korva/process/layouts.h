// Speaker layouts: their names, and how a stream's format is told.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "korva/host/sound_format.h"
#include "rt/speakers.h"

namespace korva::tool {

/// All speakers that have a name: bits 0 to 17.
inline constexpr std::uint32_t knownSpeakers = 0x3FFFF;

/// The mask that `text` names: a layout's name, or 0x and hexadecimal digits. Throws with what is possible.
[[nodiscard]] std::uint32_t parseLayout(std::string_view text);

/// A layout's name; empty for a mask without one.
[[nodiscard]] std::string_view layoutName(std::uint32_t mask);

/// "6 channels, 48000 Hz, 5.1 (0x3F)".
[[nodiscard]] std::string describe(const SoundFormat& format);

/// "front left", for instance.
[[nodiscard]] std::string_view planeName(rt::Plane plane);

/// The planes that the mask's speakers land on, in the order of planes, each once.
[[nodiscard]] std::vector<rt::Plane> planesOf(std::uint32_t mask);

}  // namespace korva::tool
