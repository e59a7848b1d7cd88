// What happens while a stream runs, at a point of its sound.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "korva/preset/preset.h"

namespace korva::tool {

/// Another preset is installed.
struct PresetChange {
    std::string file;
    Preset preset;
};

/// The endpoint's volume changes.
struct VolumeChange {
    float scalar = 0.0f;  ///< 0 to 1.
};

struct StreamEvent {
    double seconds = 0;
    std::variant<PresetChange, VolumeChange> change;

    /// It happens before the first buffer that begins here or later.
    [[nodiscard]] std::uint64_t frame(std::uint32_t sampleRate) const noexcept;
};

/// Those that "SECONDS=FILE" and "SECONDS=SCALAR" of the command line ask for, in the order of time, and
/// changes of presets first at one time. Reads the presets. Throws `ToolError` with what is wrong.
[[nodiscard]] std::vector<StreamEvent> readStreamEvents(const std::vector<std::string>& changes,
                                                        const std::vector<std::string>& volumes);

/// Throws `ToolError`: no buffer begins when this one's time has come.
[[noreturn]] void failAsTooLate(const StreamEvent& event);

}  // namespace korva::tool
