#include "korva/monitor/cell_text.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <optional>

#include "platform/unicode.h"

namespace korva::tool {
namespace {

struct Range {
    char32_t first;
    char32_t last;
};

/// Blocks of marks that combine with the character before them, or show nothing.
constexpr std::array<Range, 6> combining = {{{0x300, 0x36F},
                                             {0x1AB0, 0x1AFF},
                                             {0x200B, 0x200F},
                                             {0x20D0, 0x20FF},
                                             {0xFE00, 0xFE0F},
                                             {0xFE20, 0xFE2F}}};
/// Blocks of wide characters.
constexpr std::array<Range, 9> wide = {{{0x1100, 0x115F},
                                        {0x2E80, 0x303E},
                                        {0x3041, 0xA4CF},
                                        {0xAC00, 0xD7A3},
                                        {0xF900, 0xFAFF},
                                        {0xFE30, 0xFE6F},
                                        {0xFF00, 0xFF60},
                                        {0x1F300, 0x1FAFF},
                                        {0x20000, 0x3FFFD}}};

template <std::size_t N>
bool isIn(const std::array<Range, N>& ranges, char32_t c) {
    return std::ranges::any_of(ranges,
                               [c](const Range& range) { return range.first <= c && c <= range.last; });
}

std::size_t cellsOf(char32_t c) {
    return isIn(combining, c) ? 0 : isIn(wide, c) ? 2 : 1;
}

bool isControl(char32_t c) {
    // Directions of writing, too, would make a line show what it doesn't say.
    return c < 0x20 || (c >= 0x7F && c < 0xA0) || (c >= 0x202A && c <= 0x202E) ||
           (c >= 0x2066 && c <= 0x2069);
}

}  // namespace

std::string printable(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::optional<char32_t> c = platform::takeCharacter(text);
        if (!c) {
            shown += '?';
            text.remove_prefix(1);
        } else if (isControl(*c)) {
            shown += fmt::format("\\x{:02X}", static_cast<unsigned>(*c));
        } else {
            platform::appendCharacter(shown, *c);
        }
    }
    return shown;
}

std::size_t cellCount(std::string_view text) {
    std::size_t cells = 0;
    while (!text.empty()) {
        const std::optional<char32_t> c = platform::takeCharacter(text);
        if (!c) {
            text.remove_prefix(1);
        }
        cells += c ? cellsOf(*c) : 1;
    }
    return cells;
}

std::string cutTo(std::string_view text, std::size_t cells) {
    std::string cut;
    std::size_t used = 0;
    while (!text.empty()) {
        const std::optional<char32_t> c = platform::takeCharacter(text);
        used += c ? cellsOf(*c) : 1;
        if (!c || used > cells) {
            break;
        }
        platform::appendCharacter(cut, *c);
    }
    return cut;
}

std::string padTo(std::string_view text, std::size_t cells) {
    std::string padded = cutTo(text, cells);
    return padded.append(cells - cellCount(padded), ' ');
}

std::string padLeftTo(std::string_view text, std::size_t cells) {
    const std::string cut = cutTo(text, cells);
    return std::string(cells - cellCount(cut), ' ') + cut;
}

std::string asAscii(std::string_view text) {
    std::string ascii;
    while (!text.empty()) {
        const std::optional<char32_t> c = platform::takeCharacter(text);
        if (!c) {
            text.remove_prefix(1);
        }
        ascii += c && *c < 0x80 ? static_cast<char>(*c) : '?';
    }
    return ascii;
}

}  // namespace korva::tool
