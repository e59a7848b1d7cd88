#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "korva/registry/key_place.h"
#include "korva/registry/reg_characters.h"
#include "korva/registry/reg_text.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using platform::RegistryValue;
using platform::WideString;
using platform::WideView;

constexpr std::string_view lineEnd = "\r\n";
constexpr std::size_t lineWidth = 78;  ///< Of bytes; text stays on one line.

bool isControl(WCHAR unit) {
    return unit < 0x20 || unit == 0x7F;
}

/// The text of a string that comes back to the byte when it is written in quotes: the quotes hide whether
/// there was a terminator, and readers differ about control characters and halves of pairs.
std::optional<WideString> plainText(const RegistryValue& value) {
    if (value.type != platform::registry_type::string || value.data.size() < 2 ||
        value.data.size() % 2 != 0) {
        return std::nullopt;
    }
    WideString text = unitsOf(value.data);
    const bool isTerminated = text.back() == 0;
    text.pop_back();
    const bool isPlain =
        isTerminated && std::ranges::none_of(text, isControl) && platform::exactUtf8(text).has_value();
    return isPlain ? std::optional(std::move(text)) : std::nullopt;
}

/// In quotes. Line breaks, which names may have, become escapes that not every reader knows; there is no
/// other way.
WideString quoted(WideView text) {
    WideString result = widened("\"");
    for (const auto unit : text) {
        if (unit == '\n' || unit == '\r') {
            result += widened(unit == '\n' ? "\\n" : "\\r");
            continue;
        }
        if (unit == '"' || unit == '\\') {
            result += WCHAR('\\');
        }
        result += unit;
    }
    return result + WCHAR('"');
}

std::string hexNumber(std::uint32_t number, std::size_t minDigits) {
    std::string digits;
    while (number != 0 || digits.size() < minDigits) {
        digits.insert(digits.begin(), "0123456789abcdef"[number & 0xF]);
        number >>= 4;
    }
    return digits;
}

std::string dwordText(const RegistryValue& value) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < value.data.size(); ++i) {
        number |= std::to_integer<std::uint32_t>(value.data[i]) << (8 * i);
    }
    return "dword:" + hexNumber(number, 8);
}

/// `column` is where it begins.
std::string hexText(const RegistryValue& value, std::size_t column) {
    std::string text =
        value.type == platform::registry_type::binary ? "hex:" : "hex(" + hexNumber(value.type, 1) + "):";
    column += text.size();
    for (std::size_t i = 0; i < value.data.size(); ++i) {
        const bool isLast = i + 1 == value.data.size();
        text += hexNumber(std::to_integer<std::uint32_t>(value.data[i]), 2);
        text += isLast ? "" : ",";
        column += 3;
        if (!isLast && column + 3 > lineWidth) {
            text += "\\";
            text += lineEnd;
            text += "  ";
            column = 2;
        }
    }
    return text;
}

WideString wideName(const std::string& utf8) {
    auto wide = platform::exactWide(utf8);
    if (!wide) {
        throw std::invalid_argument("a name in the registry is not UTF-8");
    }
    return std::move(*wide);
}

class Writer {
public:
    Writer() { text += widened(regTextSignature) + widened(lineEnd); }

    void write(const RegistryChange& change) {
        switch (change.kind) {
            case RegistryChange::Kind::createKey:
                return writeKey("[", change);
            case RegistryChange::Kind::deleteTree:
                return writeKey("[-", change);
            case RegistryChange::Kind::setValue:
                return writeLine(change, valueText(change.value, nameText(change).size() + 1));
            case RegistryChange::Kind::deleteValue:
                return writeLine(change, widened("-"));
        }
    }

    /// An empty line ends the last key, as every other.
    [[nodiscard]] WideString finish() { return text + widened(lineEnd); }

private:
    void writeKey(std::string_view opening, const RegistryChange& change) {
        const std::string key = keyText(change.root, change.path);
        if (key.find_first_of("\r\n") != std::string::npos) {
            throw std::invalid_argument("the key '" + key +
                                        "' has a line break in its name, which .reg text can't hold");
        }
        text += widened(lineEnd) + widened(opening) + wideName(key) + widened("]") + widened(lineEnd);
    }

    void writeLine(const RegistryChange& change, const WideString& value) {
        text += nameText(change) + widened("=") + value + widened(lineEnd);
    }

    static WideString nameText(const RegistryChange& change) {
        return change.name.empty() ? widened("@") : quoted(wideName(change.name));
    }

    static WideString valueText(const RegistryValue& value, std::size_t column) {
        if (const auto plain = plainText(value)) {
            return quoted(*plain);
        }
        const bool isDword = value.type == platform::registry_type::dword && value.data.size() == 4;
        return widened(isDword ? dwordText(value) : hexText(value, column));
    }

    WideString text;
};

}  // namespace

std::vector<std::byte> writeRegText(std::span<const RegistryChange> changes) {
    Writer writer;
    for (const RegistryChange& change : changes) {
        writer.write(change);
    }
    return encodeRegText(writer.finish());
}

}  // namespace korva::tool
