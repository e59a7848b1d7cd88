// Identifiers in sources, as one reads them in documents.
#pragma once

#include <cstdint>

#include "platform/published/base_types.h"

namespace korva::platform {

/// The GUID of a text like "{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763}", made by the compiler, which takes no
/// other text.
consteval GUID guidOf(const char (&text)[39]) {
    const auto digit = [](char c) -> std::uint32_t {
        if (c >= '0' && c <= '9') {
            return static_cast<std::uint32_t>(c - '0');
        }
        if (c >= 'A' && c <= 'F') {
            return static_cast<std::uint32_t>(c - 'A' + 10);
        }
        return c >= 'a' && c <= 'f' ? static_cast<std::uint32_t>(c - 'a' + 10) : throw "no digit";
    };
    const auto number = [&](int first, int count) {
        std::uint32_t value = 0;
        for (int i = first; i < first + count; ++i) {
            value = value << 4 | digit(text[i]);
        }
        return value;
    };
    if (text[0] != '{' || text[9] != '-' || text[14] != '-' || text[19] != '-' || text[24] != '-' ||
        text[37] != '}') {
        throw "no GUID in braces";
    }
    GUID guid{number(1, 8),
              static_cast<std::uint16_t>(number(10, 4)),
              static_cast<std::uint16_t>(number(15, 4)),
              {}};
    for (int i = 0; i < 8; ++i) {
        guid.Data4[i] = static_cast<std::uint8_t>(number(i < 2 ? 20 + 2 * i : 21 + 2 * i, 2));
    }
    return guid;
}

}  // namespace korva::platform
