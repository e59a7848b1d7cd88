// Whether the registry's file is sound.
#pragma once

#include <string>

#include "korva/doctor/finding.h"
#include "platform/registry_health.h"

namespace korva::tool {

/// Of a registry that can be used, at `place`. A pure function.
[[nodiscard]] Findings registryFindings(const platform::RegistryHealth& health, const std::string& place);

/// Whether anything can be read from it.
[[nodiscard]] inline bool isReadable(const platform::RegistryHealth& health) {
    return health.isThere && health.damage.empty();
}

}  // namespace korva::tool
