// A preset from a file into an endpoint's set of properties.
#pragma once

#include <string>

#include "korva/preset/preset.h"
#include "korva/preset/preset_text.h"
#include "params/effect_keys.h"

namespace korva::tool {

/// What a preset's file ("-": standard input) says. Throws `ToolError` if it can't be read.
[[nodiscard]] ReadPreset readPresetFile(const std::string& file);

/// The preset of a file; throws `ToolError` with the first fault of one that is none.
[[nodiscard]] Preset presetOfFile(const std::string& file);

/// The path below HKEY_LOCAL_MACHINE of the set that an endpoint's settings are read from. Throws `ToolError`
/// for an identifier that can't be one.
[[nodiscard]] std::string userSetPath(const std::string& endpoint);

/// Sets an effect of an endpoint to a preset, as any other program would. Throws `ToolError` where the
/// registry refuses.  [blocks]
void installPreset(const Preset& preset, const std::string& endpoint, params::EffectKind kind);

/// "the mfx preset of the endpoint '{...}'", for messages.
[[nodiscard]] std::string presetWords(const std::string& endpoint, params::EffectKind kind);

}  // namespace korva::tool
