// Presets as the properties that an effect is set by, in the registry's form.
#pragma once

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "korva/preset/preset.h"
#include "params/effect_keys.h"
#include "platform/registry.h"

namespace korva::tool {

/// What a preset takes.
struct PresetExtent {
    std::uint32_t chunks = 0;
    std::size_t bytes = 0;  ///< Of the blobs of all chunks.
};
[[nodiscard]] PresetExtent extentOf(const Preset& preset);

/// The steps that set an effect to a preset, in the key at `setPath` below HKEY_LOCAL_MACHINE. They leave
/// nothing of an earlier preset of any engine. What selects the preset comes last, for a registry that shows
/// one step after another. A pure function.
[[nodiscard]] std::vector<platform::RegistryChange> presetChanges(const Preset& preset,
                                                                  const std::string& setPath,
                                                                  params::EffectKind kind);

/// Gives the value of a property; nothing if it is missing.
using PropertyReader = std::function<std::optional<platform::RegistryValue>(const PROPERTYKEY&)>;

/// Why an effect's properties are no preset.
class NoPreset : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The preset that properties make up, as the object takes them: parameters that a blob is too short for, or
/// that have no blob, have their defaults, which are left out. Raises `NoPreset` where they aren't one.
[[nodiscard]] Preset readPreset(params::EffectKind kind, const PropertyReader& property);

}  // namespace korva::tool
