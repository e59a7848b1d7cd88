#include "korva/preset/effect_class.h"

#include <algorithm>
#include <array>

namespace korva::tool {
namespace {

struct Effect {
    std::string_view name;
    params::EffectKind kind;
    GUID classId;
};

constexpr std::array<Effect, 3> effects = {
    {{"sfx",
      params::EffectKind::stream,
      {0xF71CA881, 0xA2E0, 0x43D1, {0x9B, 0x8D, 0xCE, 0xF1, 0x4A, 0xA0, 0xD5, 0x8D}}},
     {"mfx",
      params::EffectKind::mode,
      {0xC26AD82E, 0xB1CB, 0x4BDF, {0x87, 0xE9, 0xCA, 0xCD, 0x7F, 0xD6, 0xC6, 0xFD}}},
     {"efx",
      params::EffectKind::endpoint,
      {0x8F3540DF, 0x18B0, 0x4943, {0xB9, 0x16, 0xD4, 0xA7, 0x98, 0x01, 0x58, 0x7D}}}}};

}  // namespace

std::optional<params::EffectKind> effectOfName(std::string_view name) noexcept {
    const auto* const found = std::ranges::find(effects, name, &Effect::name);
    return found == effects.end() ? std::nullopt : std::optional(found->kind);
}

std::string_view effectName(params::EffectKind kind) noexcept {
    return std::ranges::find(effects, kind, &Effect::kind)->name;
}

const GUID& effectClass(params::EffectKind kind) noexcept {
    return std::ranges::find(effects, kind, &Effect::kind)->classId;
}

}  // namespace korva::tool
