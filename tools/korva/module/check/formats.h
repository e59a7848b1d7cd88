// Formats to try a module with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "korva/module/check/sound.h"
#include "korva/module/check/tested_module.h"
#include "rt/engine_format.h"

namespace korva::tool {

inline constexpr std::uint32_t usualRate = 48'000;

[[nodiscard]] rt::EngineFormat formatOf(std::int32_t channels, std::uint32_t mask,
                                        std::uint32_t rate = usualRate);

/// All default layouts of 1 to 8 channels.
[[nodiscard]] std::vector<rt::EngineFormat> usualFormats(std::uint32_t rate = usualRate);

/// Layouts that a stream may have and that few expect: speakers that share a plane, more channels than
/// planes, masks that don't fit, none.
[[nodiscard]] std::vector<rt::EngineFormat> oddFormats();

/// "2 channels (0x3) at 48000 Hz", and that of two sides.
[[nodiscard]] std::string formatText(const rt::EngineFormat& format);
[[nodiscard]] std::string pairText(const rt::EngineFormat& in, const rt::EngineFormat& out);

/// Whether a stream of these formats reaches the module as they are.
[[nodiscard]] bool accepts(TestedInstance& instance, const rt::EngineFormat& in, const rt::EngineFormat& out);

/// Scenes of what the module accepts: one layout on both sides and folds, each with default parameters, and
/// with parameters changed by `seed`. Throws `CheckSkipped` if it accepts none, or no sound goes through it.
[[nodiscard]] std::vector<Scene> scenesFor(const TestedModule& module, std::uint32_t seed);

}  // namespace korva::tool
