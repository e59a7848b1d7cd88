#include "korva/registry/reg_characters.h"

#include <algorithm>
#include <string>

#include "korva/registry/reg_text.h"

namespace korva::tool {
namespace {

using platform::WideString;
using platform::WideView;

constexpr std::size_t unitSize = 2;

bool beginsWith(std::span<const std::byte> bytes, std::initializer_list<unsigned> mark) {
    return bytes.size() >= mark.size() &&
           std::equal(mark.begin(), mark.end(), bytes.begin(),
                      [](unsigned wanted, std::byte byte) { return std::byte(wanted) == byte; });
}

/// The number of the line in which a text ends.
template <class Text>
std::size_t lastLine(const Text& text) {
    std::size_t line = 1;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isCr = text[i] == '\r';
        const bool isCrOfCrLf = isCr && i + 1 < text.size() && text[i + 1] == '\n';
        line += (isCr || text[i] == '\n') && !isCrOfCrLf ? 1U : 0U;
    }
    return line;
}

WideString fromUtf16(std::span<const std::byte> bytes) {
    WideString text = unitsOf(bytes);
    if (bytes.size() % unitSize != 0) {
        throw RegTextError(lastLine(text), "expected a whole character at the end: it is cut in half");
    }
    return text;
}

/// Where the first line with a byte that belongs to no character is.
[[noreturn]] void failOnUtf8(std::string_view text) {
    std::size_t begin = 0;
    while (begin < text.size()) {
        const std::size_t end = std::min(text.find_first_of("\r\n", begin), text.size());
        if (!platform::exactWide(text.substr(begin, end - begin))) {
            break;
        }
        begin = end + 1;
    }
    throw RegTextError(lastLine(text.substr(0, begin)), "expected UTF-8, or UTF-16 with a byte order mark");
}

WideString fromUtf8(std::span<const std::byte> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    auto wide = platform::exactWide(text);
    if (!wide) {
        failOnUtf8(text);
    }
    return std::move(*wide);
}

WideString decodeBytes(std::span<const std::byte> bytes) {
    if (bytes.size() > maxRegTextBytes) {
        throw RegTextError(1, "expected at most 128 MiB");
    }
    if (beginsWith(bytes, {0xFF, 0xFE})) {
        return fromUtf16(bytes.subspan(2));
    }
    if (beginsWith(bytes, {0xFE, 0xFF})) {
        throw RegTextError(1, "expected UTF-8 or little-endian UTF-16, this is big-endian");
    }
    return fromUtf8(beginsWith(bytes, {0xEF, 0xBB, 0xBF}) ? bytes.subspan(3) : bytes);
}

}  // namespace

WideString decodeRegText(std::span<const std::byte> bytes) {
    WideString text = decodeBytes(bytes);
    const std::size_t zero = text.find(WCHAR{0});
    if (zero != WideString::npos) {
        throw RegTextError(lastLine(WideView(text).substr(0, zero)),
                           "expected text, there is a zero character; UTF-16 needs its byte order mark");
    }
    return text;
}

WideString unitsOf(std::span<const std::byte> bytes) {
    WideString units;
    units.reserve(bytes.size() / unitSize);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += unitSize) {
        const unsigned unit = std::to_integer<unsigned>(bytes[i]) | std::to_integer<unsigned>(bytes[i + 1])
                                                                        << 8;
        units += static_cast<WCHAR>(unit);
    }
    return units;
}

std::vector<std::byte> encodeRegText(WideView text) {
    std::vector<std::byte> bytes = {std::byte{0xFF}, std::byte{0xFE}};
    bytes.reserve(bytes.size() + text.size() * unitSize);
    appendUnits(bytes, text);
    return bytes;
}

void appendUnits(std::vector<std::byte>& bytes, WideView text) {
    for (const auto unit : text) {
        bytes.push_back(static_cast<std::byte>(unit & 0xFF));
        bytes.push_back(static_cast<std::byte>(unit >> 8));
    }
}

}  // namespace korva::tool
