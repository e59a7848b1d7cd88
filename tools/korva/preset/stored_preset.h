// The preset that an endpoint's registry holds.
#pragma once

#include "korva/preset/preset_properties.h"

namespace korva::tool {

/// Looks at the properties until two looks find the same, so that a preset which is installed meanwhile is
/// seen whole or not at all. Raises `NoPreset` where they are none, `ToolError` where they don't come to
/// rest.
[[nodiscard]] Preset readPresetAtRest(params::EffectKind kind, const PropertyReader& property);

/// The same of the values of `key`. Raises `ToolError` also where the registry refuses.
[[nodiscard]] Preset readStoredPreset(const platform::RegistryKey& key, params::EffectKind kind);

}  // namespace korva::tool
