#include "korva/registry/value_text.h"

#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "korva/errors.h"
#include "korva/registry/reg_characters.h"
#include "platform/unicode.h"

namespace korva::tool {
namespace {

using platform::RegistryValue;
using platform::WideString;
using platform::WideView;
using Bytes = std::vector<std::byte>;
namespace types = platform::registry_type;

constexpr std::array typeNames = {
    std::pair(types::none, "none"),     std::pair(types::string, "sz"),
    std::pair(types::binary, "binary"), std::pair(types::expandString, "expand_sz"),
    std::pair(types::dword, "dword"),   std::pair(types::multiString, "multi_sz"),
    std::pair(types::qword, "qword")};

constexpr std::size_t summaryBytes = 32;  ///< Of which a summary shows the digits.

Bytes bytesOfString(const std::string& text) {
    Bytes bytes;
    appendUnits(bytes, platform::toWide(text) + WCHAR{0});
    return bytes;
}

Bytes bytesOfStrings(const std::vector<std::string>& texts) {
    Bytes bytes;
    for (const std::string& text : texts) {
        appendUnits(bytes, platform::toWide(text) + WCHAR{0});
    }
    appendUnits(bytes, WideString(1, WCHAR{0}));
    return bytes;
}

Bytes bytesOfNumber(std::uint64_t number, std::size_t size) {
    Bytes bytes(size);
    for (std::byte& byte : bytes) {
        byte = static_cast<std::byte>(number & 0xFF);
        number >>= 8;
    }
    return bytes;
}

std::uint64_t numberOf(const Bytes& bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i > 0; --i) {
        number = number << 8 | std::to_integer<std::uint64_t>(bytes[i - 1]);
    }
    return number;
}

ReadableData readableString(const Bytes& bytes) {
    WideString units = unitsOf(bytes);
    if (units.ends_with(WCHAR{0})) {
        units.pop_back();
    }
    auto text = platform::exactUtf8(units);
    if (bytes.size() % 2 != 0 || !text || units.find(WCHAR{0}) != WideString::npos) {
        return {};
    }
    const bool isExact = bytes == bytesOfString(*text);
    return {std::move(*text), isExact};
}

ReadableData readableStrings(const Bytes& bytes) {
    const auto all = platform::exactUtf8(unitsOf(bytes));
    if (bytes.size() % 2 != 0 || !all) {
        return {};
    }
    std::vector<std::string> texts;
    std::string_view rest = *all;
    while (!rest.empty() && rest.front() != '\0') {
        const std::size_t length = std::min(rest.find('\0'), rest.size());
        texts.emplace_back(rest.substr(0, length));
        rest.remove_prefix(std::min(length + 1, rest.size()));
    }
    if (rest.size() > 1) {
        return {};  // what stands behind an empty string is lost to readers
    }
    const bool isExact = bytes == bytesOfStrings(texts);
    return {std::move(texts), isExact};
}

ReadableData readableNumber(const Bytes& bytes, std::size_t size) {
    return bytes.size() == size ? ReadableData{numberOf(bytes), true} : ReadableData{};
}

std::string numberSummary(const RegistryValue& value, std::uint64_t number) {
    return fmt::format("{} (0x{:0{}x})", number, number, value.data.size() * 2);
}

std::string hexSummary(const Bytes& bytes) {
    if (bytes.size() <= summaryBytes) {
        return hexDigits(bytes);
    }
    const Bytes first(bytes.begin(), bytes.begin() + summaryBytes);
    return fmt::format("{}... ({} bytes)", hexDigits(first), bytes.size());
}

std::string stringsSummary(const std::vector<std::string>& texts) {
    std::vector<std::string> quoted;
    quoted.reserve(texts.size());
    for (const std::string& text : texts) {
        quoted.push_back('"' + text + '"');
    }
    return fmt::format("{}", fmt::join(quoted, ", "));
}

const std::string& oneWord(const std::string& type, const std::vector<std::string>& words) {
    if (words.size() != 1) {
        fail("a value of type {} takes one DATA, not {}", type, words.size());
    }
    return words.front();
}

void expectUtf8(const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (!platform::exactWide(word)) {
            fail("DATA '{}' is not UTF-8", word);
        }
    }
}

RegistryValue numberOfWord(std::uint32_t type, const std::string& word, std::uint64_t highest) {
    const bool isHex = word.starts_with("0x") || word.starts_with("0X");
    const char* const end = word.data() + word.size();
    std::uint64_t number = 0;
    const auto [stop, error] = std::from_chars(word.data() + (isHex ? 2 : 0), end, number, isHex ? 16 : 10);
    if (error != std::errc() || stop != end || number > highest) {
        fail("DATA of type {} must be 0 to {}, in decimal or as 0x..., not '{}'", typeName(type), highest,
             word);
    }
    return {type, bytesOfNumber(number, type == types::dword ? 4 : 8)};
}

RegistryValue stringsOfWords(const std::vector<std::string>& words) {
    expectUtf8(words);
    if (std::ranges::find(words, "") != words.end()) {
        fail("DATA of type multi_sz can't have an empty string: it would end the list");
    }
    return {types::multiString, bytesOfStrings(words)};
}

std::optional<Bytes> bytesOfDigits(std::string_view digits) {
    Bytes bytes;
    for (; digits.size() >= 2; digits.remove_prefix(2)) {
        const std::string pair(digits.substr(0, 2));
        const char* const end = pair.data() + pair.size();
        unsigned byte = 0;
        const auto [stop, error] = std::from_chars(pair.data(), end, byte, 16);
        if (error != std::errc() || stop != end) {
            return std::nullopt;
        }
        bytes.push_back(static_cast<std::byte>(byte));
    }
    return digits.empty() ? std::optional(std::move(bytes)) : std::nullopt;
}

RegistryValue binaryOfWords(const std::vector<std::string>& words) {
    const std::string digits = words.empty() ? "" : oneWord("binary", words);
    auto bytes = bytesOfDigits(digits);
    if (!bytes) {
        fail("DATA of type binary must be two hexadecimal digits for each byte, such as 00ff12, not '{}'",
             digits);
    }
    return {types::binary, std::move(*bytes)};
}

}  // namespace

ReadableData readableData(const RegistryValue& value) {
    switch (value.type) {
        case types::string:
        case types::expandString:
            return readableString(value.data);
        case types::multiString:
            return readableStrings(value.data);
        case types::dword:
            return readableNumber(value.data, 4);
        case types::qword:
            return readableNumber(value.data, 8);
        default:
            return {};
    }
}

std::string typeName(std::uint32_t type) {
    const auto* const found =
        std::ranges::find(typeNames, type, [](const auto& known) { return known.first; });
    return found == typeNames.end() ? fmt::format("{:#x}", type) : found->second;
}

std::string hexDigits(const Bytes& bytes) {
    std::string digits;
    for (const std::byte byte : bytes) {
        fmt::format_to(std::back_inserter(digits), "{:02x}", std::to_integer<unsigned>(byte));
    }
    return digits;
}

std::string dataText(const RegistryValue& value) {
    const auto readable = readableData(value).data;
    if (const auto* const text = std::get_if<std::string>(&readable)) {
        return *text;
    }
    if (const auto* const texts = std::get_if<std::vector<std::string>>(&readable)) {
        return fmt::format("{}", fmt::join(*texts, "\n"));
    }
    const auto* const number = std::get_if<std::uint64_t>(&readable);
    return number != nullptr ? std::to_string(*number) : hexDigits(value.data);
}

std::string dataSummary(const RegistryValue& value) {
    const auto readable = readableData(value).data;
    if (const auto* const text = std::get_if<std::string>(&readable)) {
        return stringsSummary({asOneLine(*text)});
    }
    if (const auto* const texts = std::get_if<std::vector<std::string>>(&readable)) {
        return asOneLine(stringsSummary(*texts));
    }
    const auto* const number = std::get_if<std::uint64_t>(&readable);
    return number != nullptr ? numberSummary(value, *number) : hexSummary(value.data);
}

RegistryValue valueOfWords(const std::string& type, const std::vector<std::string>& words) {
    if (type == "sz") {
        expectUtf8(words);
        return {types::string, bytesOfString(oneWord(type, words))};
    }
    if (type == "dword") {
        return numberOfWord(types::dword, oneWord(type, words), std::numeric_limits<std::uint32_t>::max());
    }
    if (type == "qword") {
        return numberOfWord(types::qword, oneWord(type, words), std::numeric_limits<std::uint64_t>::max());
    }
    if (type == "binary") {
        return binaryOfWords(words);
    }
    if (type == "multi_sz") {
        return stringsOfWords(words);
    }
    fail("TYPE must be sz, dword, qword, binary or multi_sz, not '{}'", type);
}

}  // namespace korva::tool
