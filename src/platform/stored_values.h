// Strings and numbers as the registry keeps them.
#pragma once

#include <cstdint>
#include <span>

#include "platform/registry.h"
#include "platform/unicode.h"

namespace korva::platform {

/// A REG_SZ of the text and its terminator.  [any]
[[nodiscard]] inline RegistryValue stringValue(WideView text) {
    const WideString terminated(text);
    const auto bytes = std::as_bytes(std::span(terminated.c_str(), terminated.size() + 1));
    return {registry_type::string, {bytes.begin(), bytes.end()}};
}

/// A REG_DWORD.  [any]
[[nodiscard]] inline RegistryValue numberValue(std::uint32_t number) {
    const auto bytes = std::as_bytes(std::span(&number, 1));
    return {registry_type::dword, {bytes.begin(), bytes.end()}};
}

}  // namespace korva::platform
