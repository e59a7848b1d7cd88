#include "platform/unicode.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace korva::platform {
namespace {

constexpr char32_t replacement = 0xFFFD;

/// What stands at the front of a text: a character, or as much as can't belong to one.
struct Decoded {
    char32_t character = replacement;
    std::size_t length = 1;  ///< Units that it takes, never 0.
    bool isValid = false;
};

constexpr bool isHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool isLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// How many bytes follow a first byte, and the bounds of the second one. The bounds keep out longer forms
/// than needed, surrogates, and what lies past the last character.
struct Lead {
    std::size_t followers = 0;
    std::uint8_t lowest = 0x80;
    std::uint8_t highest = 0xBF;
};

constexpr Lead leadOf(std::uint8_t first) {
    if (first < 0xC2 || first > 0xF4) {
        return {};
    }
    if (first < 0xE0) {
        return {.followers = 1};
    }
    if (first < 0xF0) {
        return {.followers = 2,
                .lowest = static_cast<std::uint8_t>(first == 0xE0 ? 0xA0 : 0x80),
                .highest = static_cast<std::uint8_t>(first == 0xED ? 0x9F : 0xBF)};
    }
    return {.followers = 3,
            .lowest = static_cast<std::uint8_t>(first == 0xF0 ? 0x90 : 0x80),
            .highest = static_cast<std::uint8_t>(first == 0xF4 ? 0x8F : 0xBF)};
}

/// The bytes that could have begun a character are replaced together, as Unicode recommends: a character that
/// is cut off becomes one U+FFFD, and the byte that cut it off counts for itself.
Decoded decode(std::string_view text) {
    const auto first = static_cast<std::uint8_t>(text[0]);
    if (first < 0x80) {
        return {.character = first, .isValid = true};
    }
    const Lead lead = leadOf(first);
    if (lead.followers == 0) {
        return {};
    }
    char32_t character = first & (0x3Fu >> lead.followers);
    for (std::size_t i = 1; i <= lead.followers; ++i) {
        const auto next = i < text.size() ? static_cast<std::uint8_t>(text[i]) : std::uint8_t{0};
        const bool isSecond = i == 1;
        if (next < (isSecond ? lead.lowest : 0x80) || next > (isSecond ? lead.highest : 0xBF)) {
            return {.length = i};
        }
        character = character << 6 | (next & 0x3Fu);
    }
    return {.character = character, .length = lead.followers + 1, .isValid = true};
}

Decoded decode(WideView text) {
    const auto first = static_cast<char32_t>(text[0]);
    if (isHighSurrogate(first) && text.size() > 1 && isLowSurrogate(text[1])) {
        const char32_t low = text[1];
        return {
            .character = 0x10000 + ((first - 0xD800) << 10) + (low - 0xDC00), .length = 2, .isValid = true};
    }
    if (isHighSurrogate(first) || isLowSurrogate(first)) {
        return {};
    }
    return {.character = first, .isValid = true};
}

void append(WideString& text, char32_t character) {
    if (character < 0x10000) {
        text += static_cast<WCHAR>(character);
        return;
    }
    text += static_cast<WCHAR>(0xD800 + ((character - 0x10000) >> 10));
    text += static_cast<WCHAR>(0xDC00 + (character & 0x3FF));
}

void append(std::string& text, char32_t character) {
    appendCharacter(text, character);
}

/// Whether every character of `from` arrived in `to` as it was. If `isExact`, the first that can't ends it.
template <class From, class To>
bool convert(From from, To& to, bool isExact) {
    to.reserve(from.size());
    while (!from.empty()) {
        const Decoded decoded = decode(from);
        if (isExact && !decoded.isValid) {
            return false;
        }
        append(to, decoded.character);
        from.remove_prefix(decoded.length);
    }
    return true;
}

}  // namespace

WideString toWide(std::string_view utf8) {
    WideString wide;
    convert(utf8, wide, false);
    return wide;
}

std::string toUtf8(WideView wide) {
    std::string utf8;
    convert(wide, utf8, false);
    return utf8;
}

std::optional<WideString> exactWide(std::string_view utf8) {
    WideString wide;
    return convert(utf8, wide, true) ? std::optional(std::move(wide)) : std::nullopt;
}

std::optional<std::string> exactUtf8(WideView wide) {
    std::string utf8;
    return convert(wide, utf8, true) ? std::optional(std::move(utf8)) : std::nullopt;
}

std::optional<char32_t> takeCharacter(std::string_view& utf8) {
    const Decoded first = decode(utf8);
    if (!first.isValid) {
        return std::nullopt;
    }
    utf8.remove_prefix(first.length);
    return first.character;
}

void appendCharacter(std::string& utf8, char32_t character) {
    if (character < 0x80) {
        utf8 += static_cast<char>(character);
        return;
    }
    const int followers = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    const std::uint32_t mark = 0xF00u >> (followers + 1) & 0xFFu;
    utf8 += static_cast<char>(mark | character >> (6 * followers));
    for (int i = followers - 1; i >= 0; --i) {
        utf8 += static_cast<char>(0x80u | (character >> (6 * i) & 0x3Fu));
    }
}

}  // namespace korva::platform
