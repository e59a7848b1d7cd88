#include "platform/property_key.h"

#include <array>
#include <cstdint>

namespace korva::platform {
namespace {

constexpr int digitCount = 32;

/// Its value, or -1.
constexpr int hexadecimalDigit(char c) noexcept {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The 16 bytes in the order of the text, in which each of the three numbers has its highest byte first.
using TextBytes = std::array<std::uint8_t, 16>;

GUID guidOf(const TextBytes& b) noexcept {
    GUID guid{};
    guid.Data1 = static_cast<std::uint32_t>(b[0]) << 24 | static_cast<std::uint32_t>(b[1]) << 16 |
                 static_cast<std::uint32_t>(b[2]) << 8 | b[3];
    guid.Data2 = static_cast<std::uint16_t>(b[4] << 8 | b[5]);
    guid.Data3 = static_cast<std::uint16_t>(b[6] << 8 | b[7]);
    for (std::size_t i = 0; i < 8; ++i) {
        guid.Data4[i] = b[i + 8];
    }
    return guid;
}

TextBytes textBytesOf(const GUID& guid) noexcept {
    TextBytes b{};
    for (std::size_t i = 0; i < 4; ++i) {
        b[i] = static_cast<std::uint8_t>(guid.Data1 >> (24 - 8 * i));
    }
    for (std::size_t i = 0; i < 2; ++i) {
        b[i + 4] = static_cast<std::uint8_t>(guid.Data2 >> (8 - 8 * i));
        b[i + 6] = static_cast<std::uint8_t>(guid.Data3 >> (8 - 8 * i));
    }
    for (std::size_t i = 0; i < 8; ++i) {
        b[i + 8] = guid.Data4[i];
    }
    return b;
}

/// Only digits count, and a number past 32 bits wraps: nothing that somebody wrote there may fail.
DWORD leadingNumber(std::string_view text) noexcept {
    DWORD number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') {
            break;
        }
        number = number * 10 + static_cast<DWORD>(c - '0');
    }
    return number;
}

std::string guidTextIn(std::string_view digits, const GUID& guid) {
    const TextBytes bytes = textBytesOf(guid);
    std::string text = "{";
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text + "}";
}

}  // namespace

std::string guidText(const GUID& guid) {
    return guidTextIn("0123456789abcdef", guid);
}

std::string upperGuidText(const GUID& guid) {
    return guidTextIn("0123456789ABCDEF", guid);
}

GUID GuidFromText(std::string_view text) noexcept {
    TextBytes bytes{};
    int count = 0;
    for (const char c : text) {
        const int digit = hexadecimalDigit(c);
        if (digit < 0) {
            continue;
        }
        if (count == digitCount) {
            return GUID{};
        }
        std::uint8_t& byte = bytes[static_cast<std::size_t>(count / 2)];
        byte = static_cast<std::uint8_t>(byte << 4 | digit);
        ++count;
    }
    return count == digitCount ? guidOf(bytes) : GUID{};
}

std::string KeyToText(REFPROPERTYKEY key) {
    return guidText(key.fmtid) + "," + std::to_string(key.pid);
}

PROPERTYKEY TextToKey(std::string_view text) noexcept {
    const std::size_t comma = text.find(',');
    if (comma == std::string_view::npos) {
        return PROPERTYKEY{};
    }
    return {GuidFromText(text.substr(0, comma)), leadingNumber(text.substr(comma + 1))};
}

bool isValidKey(REFPROPERTYKEY key) noexcept {
    return !(key.fmtid == GUID{});
}

}  // namespace korva::platform
