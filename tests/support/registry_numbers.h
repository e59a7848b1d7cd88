// Numbers in the registry.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

#include "platform/registry.h"

namespace korva::test {

/// Whether it worked.
[[nodiscard]] inline bool setNumber(const platform::RegistryKey& key, std::string_view name,
                                    std::uint32_t number) {
    return key.setValue(name, platform::registry_type::dword, std::as_bytes(std::span(&number, 1))) == 0;
}

/// Nothing if there is no such number.
[[nodiscard]] inline std::optional<std::uint32_t> numberOf(const platform::RegistryKey& key,
                                                           std::string_view name) {
    platform::RegistryValue value;
    std::uint32_t number = 0;
    if (key.readValue(name, value) != 0 || value.data.size() != sizeof(number)) {
        return std::nullopt;
    }
    std::memcpy(&number, value.data.data(), sizeof(number));
    return number;
}

}  // namespace korva::test
