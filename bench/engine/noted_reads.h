// What a core reads of an endpoint's properties.
#pragma once

#include <vector>

#include "bench/engine/core_rig.h"
#include "platform/published/property_types.h"

namespace korva::bench {

/// The properties of the user's set that a core asks for from the identifier to the engine, one for each
/// time.
[[nodiscard]] std::vector<PROPERTYKEY> propertiesReadBy(const CoreGround& ground);

}  // namespace korva::bench
