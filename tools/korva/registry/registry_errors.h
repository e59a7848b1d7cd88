// What the user is told when the registry refuses.
#pragma once

#include <string>

#include "platform/registry.h"

namespace korva::tool {

/// Why it refused and what helps, naming the registry's place: what stands behind "cannot ...: ".
[[nodiscard]] std::string registryMessage(platform::RegistryResult code);

/// Throws `ToolError` unless the code is 0. `action` goes on behind "cannot", as "read the key 'HKLM\A'".
void throwIfRefused(platform::RegistryResult code, const std::string& action);

}  // namespace korva::tool
