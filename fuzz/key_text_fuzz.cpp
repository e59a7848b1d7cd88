// Any text as a key's text or a GUID's: what is read is written in one form, which reads back as the same.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "platform/property_key.h"

namespace {

using namespace korva::platform;
using korva::fuzz::require;

bool isDigit(char c) {
    return std::string_view("0123456789abcdefABCDEF").find(c) != std::string_view::npos;
}

std::string digitsOf(std::string_view text) {
    std::string digits;
    for (const char c : text) {
        if (isDigit(c)) {
            digits += static_cast<char>(c >= 'A' && c <= 'F' ? c + ('a' - 'A') : c);
        }
    }
    return digits;
}

void checkGuid(std::string_view text) {
    const GUID guid = GuidFromText(text);
    const std::string written = guidText(guid);
    const std::string digits = digitsOf(text);
    require(written.size() == 38);
    require(digitsOf(written) == (digits.size() == 32 ? digits : std::string(32, '0')));
    require(GuidFromText(written) == guid);
    require(GuidFromText(digits) == guid);
}

/// Digit by digit from the end, which is another way than that of the function it is held against.
std::uint32_t lowestBitsOfNumber(std::string_view text) {
    std::uint32_t number = 0;
    std::uint32_t weight = 1;
    for (std::size_t i = std::min(text.find_first_not_of("0123456789"), text.size()); i > 0; --i) {
        number += weight * static_cast<std::uint32_t>(text[i - 1] - '0');
        weight *= 10;
    }
    return number;
}

void checkKey(std::string_view text) {
    const PROPERTYKEY key = TextToKey(text);
    const std::size_t comma = text.find(',');
    const bool hasComma = comma != std::string_view::npos;
    require(key.fmtid == (hasComma ? GuidFromText(text.substr(0, comma)) : GUID{}));
    require(key.pid == (hasComma ? lowestBitsOfNumber(text.substr(comma + 1)) : 0));
    require(isValidKey(key) || key.fmtid == GUID{});
    require(TextToKey(KeyToText(key)) == key);
}

void checkBytesAsKey(const std::uint8_t* data, std::size_t size) {
    PROPERTYKEY key{};
    if (size >= sizeof(key)) {
        std::memcpy(&key, data, sizeof(key));
        require(TextToKey(KeyToText(key)) == key);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text =
        size == 0 ? std::string_view() : std::string_view(reinterpret_cast<const char*>(data), size);
    checkGuid(text);
    checkKey(text);
    checkBytesAsKey(data, size);
    return 0;
}
