// Bytes of an input as UTF-16.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>

#include "platform/unicode.h"

namespace korva::fuzz {

/// The whole units, little-endian; a last odd byte is left out.  [any]
inline platform::WideString unitsOf(std::span<const std::byte> bytes) {
    platform::WideString units(bytes.size() / sizeof(WCHAR), WCHAR{0});
    if (!units.empty()) {
        std::memcpy(units.data(), bytes.data(), units.size() * sizeof(WCHAR));
    }
    return units;
}

}  // namespace korva::fuzz
