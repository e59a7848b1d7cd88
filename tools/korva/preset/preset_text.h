// Presets as JSON text, which people write.
//
//     {
//       "engine": "{c9f475bc-13e4-6150-ae88-790995afc7c1}",
//       "presetVersion": 1,
//       "hardware": false,
//       "parameters": [
//         {"module": -1, "id": -22, "floats": [1.0]},
//         {"module": 0, "id": 8, "bools": [true]}
//       ]
//     }
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "korva/preset/json_tree.h"
#include "korva/preset/preset.h"

namespace korva::tool {

/// A preset, or what is wrong with its text.
struct ReadPreset {
    std::optional<Preset> preset;
    /// All there are, none if there is a preset: keys that appear twice, then the preset's own keys, then the
    /// parameters in the order of the text.
    std::vector<TextFault> faults;
};

/// A pure function.
[[nodiscard]] ReadPreset readPresetText(std::string_view text);

/// The text that reads as this very preset, a parameter a line. Numbers stand where they say the bytes
/// exactly, else the bytes do. The engine has to be known, and have the parameters.
[[nodiscard]] std::string presetText(const Preset& preset);

/// "preset.json: parameters[3].floats: expected 12 values, got 11", or "preset.json:3:14: ...".
[[nodiscard]] std::string faultText(std::string_view file, const TextFault& fault);

/// "{...}, {...} or {...}", for messages.
[[nodiscard]] std::string knownEnginesText();

}  // namespace korva::tool
