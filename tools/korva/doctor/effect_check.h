// Whether what an endpoint's registry says of one effect can be used. Pure functions.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "korva/doctor/finding.h"
#include "korva/preset/preset_properties.h"
#include "params/effect_keys.h"

namespace korva::tool {

/// An effect of an endpoint, for messages and remedies.
struct EffectPlace {
    std::string endpointId;
    std::string endpointName;  ///< Empty if it has none.
    params::EffectKind kind = params::EffectKind::mode;
};

/// "the mfx effect of "Speakers"", or of the identifier.
[[nodiscard]] std::string effectWords(const EffectPlace& place);

struct EffectReport {
    Findings findings;
    bool isSelected = false;           ///< Whether anything says that the effect has settings.
    std::vector<std::string> modules;  ///< Whose names its engine goes by.
};

/// Looks at the properties of one effect as the object reads them. `keys` are those of all properties there
/// are.
[[nodiscard]] EffectReport examineEffect(const EffectPlace& place, const PropertyReader& property,
                                         std::span<const PROPERTYKEY> keys);

}  // namespace korva::tool
