#include "embedded_registry/names.h"

#include "embedded_registry/case_folding.h"

namespace korva::platform::embedded {
namespace {

constexpr char32_t noCodePoint = 0xFFFFFFFF;

/// How many bytes a character has that begins with this one; 0 for none.
std::size_t lengthFrom(unsigned char first) {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xC2) {
        return 0;
    }
    return first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 0;
}

/// Whether that many bytes are the shortest form of a code point that is no surrogate.
bool isCharacter(char32_t codePoint, std::size_t length) {
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    return codePoint >= least[length] && codePoint <= 0x10FFFF && (codePoint < 0xD800 || codePoint > 0xDFFF);
}

/// Takes the first character off `text`; `noCodePoint` if there is none.
char32_t takeCharacter(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const std::size_t length = lengthFrom(byte(0));
    if (length == 0 || length > text.size()) {
        return noCodePoint;
    }
    char32_t codePoint = length == 1 ? byte(0) : byte(0) & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0) != 0x80) {
            return noCodePoint;
        }
        codePoint = codePoint << 6 | (byte(i) & 0x3Fu);
    }
    text.remove_prefix(length);
    return isCharacter(codePoint, length) ? codePoint : noCodePoint;
}

void append(std::string& text, char32_t codePoint) {
    const auto put = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (codePoint < 0x80) {
        put(codePoint);
        return;
    }
    const int rest = codePoint < 0x800 ? 1 : codePoint < 0x10000 ? 2 : 3;
    put((0xFF00u >> (rest + 1) & 0xFFu) | codePoint >> (6 * rest));
    for (int shift = 6 * (rest - 1); shift >= 0; shift -= 6) {
        put(0x80 | (codePoint >> shift & 0x3F));
    }
}

}  // namespace

std::optional<std::string> foldedName(std::string_view name, std::size_t longest) {
    std::string folded;
    folded.reserve(name.size());
    std::size_t units = 0;
    while (!name.empty()) {
        const char32_t codePoint = takeCharacter(name);
        units += codePoint < 0x10000 ? 1 : 2;
        if (codePoint == noCodePoint || codePoint == 0 || units > longest) {
            return std::nullopt;
        }
        append(folded, foldCase(codePoint));
    }
    return folded;
}

std::optional<Path> splitPath(std::string_view path) {
    Path parts;
    while (!path.empty()) {
        const std::string_view written = path.substr(0, path.find('\\'));
        auto folded = foldedName(written, longestKeyName);
        if (!folded || folded->empty() || parts.size() == deepestKey) {
            return std::nullopt;
        }
        parts.push_back({std::string(written), std::move(*folded)});
        path.remove_prefix(written.size());
        if (!path.empty()) {
            path.remove_prefix(1);
        }
    }
    return parts;
}

}  // namespace korva::platform::embedded
