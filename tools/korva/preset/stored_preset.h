// The preset that an endpoint's registry holds.
#pragma once

#include "korva/preset/preset.h"
#include "params/effect_keys.h"
#include "platform/registry.h"

namespace korva::tool {

/// Reads the values of `key` until two looks at them find the same, so that a preset which is installed
/// meanwhile is seen whole or not at all. Raises `NoPreset` where they are none, `ToolError` where the
/// registry refuses, or the values don't come to rest.
[[nodiscard]] Preset readStoredPreset(const platform::RegistryKey& key, params::EffectKind kind);

}  // namespace korva::tool
