// Values of the registry as those who read them take them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/registry.h"

namespace korva::tool {

/// A REG_SZ up to its terminator, in UTF-8; nothing for another type.  [any]
[[nodiscard]] std::optional<std::string> storedText(const platform::RegistryValue& value);

/// A REG_DWORD of 4 bytes.  [any]
[[nodiscard]] std::optional<std::uint32_t> storedNumber(const platform::RegistryValue& value);

}  // namespace korva::tool
