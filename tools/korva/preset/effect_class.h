// The three effects by the names that the command line has for them.
#pragma once

#include <optional>
#include <string_view>

#include "params/effect_keys.h"

namespace korva::tool {

/// The kind of "sfx", "mfx" or "efx".
[[nodiscard]] std::optional<params::EffectKind> effectOfName(std::string_view name) noexcept;

/// The other way round.
[[nodiscard]] std::string_view effectName(params::EffectKind kind) noexcept;

/// The class of the effect's object, whose GUID is also the one that its properties go under.
[[nodiscard]] const GUID& effectClass(params::EffectKind kind) noexcept;

}  // namespace korva::tool
