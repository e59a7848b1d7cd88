// What an instance shows, as text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>

#include "platform/published/property_types.h"
#include "platform/registry.h"
#include "platform/unicode.h"

namespace korva::test {

[[nodiscard]] inline std::string hexOf(std::span<const std::byte> bytes) {
    static constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (const std::byte byte : bytes) {
        text += digits[std::to_integer<std::size_t>(byte >> 4)];
        text += digits[std::to_integer<std::size_t>(byte & std::byte{15})];
    }
    return text;
}
[[nodiscard]] inline std::string hexOf(std::string_view text) {
    return hexOf(std::as_bytes(std::span(text)));
}

/// By name the type's number, a colon, and the bytes.
using ShownValues = std::map<std::string, std::string>;

[[nodiscard]] inline ShownValues shownValuesOf(const platform::RegistryKey& key) {
    ShownValues values;
    std::string name;
    for (std::uint32_t index = 0; key.valueName(index, 1000, name) == 0; ++index) {
        platform::RegistryValue value;
        if (key.readValue(name, value) == 0) {
            values[name] = std::to_string(value.type) + ":" + hexOf(value.data);
        }
    }
    return values;
}

/// The kind's number, a colon, and the value: a number, text, or the bytes of a blob.
[[nodiscard]] inline std::string variantText(const PROPVARIANT& value) {
    const std::string kind = std::to_string(value.vt) + ":";
    switch (value.vt) {
        case VT_I4:
            return kind + std::to_string(value.lVal);
        case VT_UI4:
            return kind + std::to_string(value.ulVal);
        case VT_UI8:
            return kind + std::to_string(value.uhVal.QuadPart);
        case VT_LPWSTR:
            return kind + platform::toUtf8(value.pwszVal);
        case VT_BLOB:
            return kind + hexOf(std::as_bytes(std::span(value.blob.pBlobData, value.blob.cbSize)));
        default:
            return kind;
    }
}

}  // namespace korva::test
