#include "tests/apo/inf_file.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>

#include "platform/registry_values.h"
#include "platform/stored_values.h"
#include "platform/unicode.h"

namespace korva::test {
namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == text.npos ? std::string_view()
                              : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string decoded(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE")) {
        std::vector<WCHAR> units((bytes.size() - 2) / sizeof(WCHAR));
        std::memcpy(units.data(), bytes.data() + 2, units.size() * sizeof(WCHAR));
        return platform::toUtf8({units.data(), units.size()});
    }
    const bool isAscii =
        std::ranges::all_of(bytes, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return isAscii ? std::string(bytes) : throw InfError(1, "ASCII, or UTF-16 with its mark");
}

/// Where the text first has one of `marks` outside quotes; its size if nowhere.
std::size_t findOutsideQuotes(std::string_view text, std::string_view marks) {
    bool isQuoted = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        isQuoted = isQuoted != (text[i] == '"');
        if (!isQuoted && marks.find(text[i]) != marks.npos) {
            return i;
        }
    }
    return text.size();
}

/// A field without its quotes: two in a row within quotes are one.
std::string unquoted(std::string_view field, std::size_t line) {
    if (field.find('"') == field.npos) {
        return std::string(field);
    }
    if (field.size() < 2 || field.front() != '"' || field.back() != '"') {
        throw InfError(line, "quotes around the whole of a field");
    }
    std::string text;
    const std::string_view inner = field.substr(1, field.size() - 2);
    for (std::size_t i = 0; i < inner.size(); ++i) {
        if (inner[i] == '"' && inner.substr(++i, 1) != "\"") {
            throw InfError(line, "two quotes for one within a field");
        }
        text += inner[i];
    }
    return text;
}

std::vector<std::string> fieldsIn(std::string_view text, std::size_t line) {
    std::vector<std::string> fields;
    while (true) {
        const std::size_t end = findOutsideQuotes(text, ",");
        fields.push_back(unquoted(trimmed(text.substr(0, end)), line));
        if (end == text.size()) {
            return fields;
        }
        text.remove_prefix(end + 1);
    }
}

InfLine lineIn(std::string_view text, std::size_t number) {
    if (std::ranges::count(text, '"') % 2 != 0) {
        throw InfError(number, "a quote that ends the text");
    }
    if (text.ends_with('\\')) {
        throw InfError(number, "a line that doesn't go on in the next");
    }
    InfLine line{.number = number, .key = {}, .fields = {}};
    const std::size_t equals = findOutsideQuotes(text, "=");
    if (equals != text.size()) {
        line.key = unquoted(trimmed(text.substr(0, equals)), number);
        text.remove_prefix(equals + 1);
    }
    line.fields = fieldsIn(text, number);
    return line;
}

std::uint32_t numberIn(std::string_view text, std::size_t line) {
    const bool isHexadecimal = text.starts_with("0x");
    const std::string_view digits = text.substr(isHexadecimal ? 2 : 0);
    std::uint32_t number = 0;
    const auto [end, error] =
        std::from_chars(digits.data(), digits.data() + digits.size(), number, isHexadecimal ? 16 : 10);
    if (error != std::errc() || end != digits.data() + digits.size()) {
        throw InfError(line, "a number of 32 bits");
    }
    return number;
}

platform::RegistryValue textsValue(const std::vector<std::string>& texts) {
    platform::WideString joined;
    for (const std::string& text : texts) {
        joined += platform::toWide(text) + WCHAR{};
    }
    platform::RegistryValue value = platform::stringValue(joined);
    value.type = platform::registry_type::multiString;
    return value;
}

void checkValue(const InfRegistryValue& value) {
    constexpr std::string_view roots[] = {"HKR", "HKLM", "HKCR", "HKCU", "HKU"};
    if (std::ranges::find(roots, value.root) == std::end(roots)) {
        throw InfError(value.line, "a root of the registry");
    }
    if (value.key.starts_with('\\') || value.key.ends_with('\\')) {
        throw InfError(value.line, "a key without a backslash at an end");
    }
    static_cast<void>(value.stored());
}

}  // namespace

std::string smallLetters(std::string_view name) {
    std::string small(name);
    std::ranges::transform(small, small.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return small;
}

platform::RegistryValue InfRegistryValue::stored() const {
    const std::size_t count = flags == inf_flag::keyOnly ? 0 : 1;
    if (flags != inf_flag::texts && values.size() != count) {
        throw InfError(line, count == 0 ? "no value" : "one value");
    }
    switch (flags) {
        case inf_flag::keyOnly:
            return {};
        case inf_flag::number:
            return platform::numberValue(numberIn(values[0], line));
        case inf_flag::texts:
            return textsValue(values);
        case inf_flag::text:
        case inf_flag::path: {
            platform::RegistryValue value = platform::stringValue(platform::toWide(values[0]));
            value.type = flags == inf_flag::path ? platform::registry_type::expandString : value.type;
            return value;
        }
        default:
            throw InfError(line, "flags that these files use");
    }
}

platform::RegistryResult writeValues(const platform::RegistryKey& place,
                                     const std::vector<InfRegistryValue>& values) {
    platform::RegistryResult result = platform::registry_result::success;
    for (auto value = values.begin(); value != values.end() && result == 0; ++value) {
        platform::RegistryKey key;
        result = place.create(value->key, platform::RegistryAccess::readWrite, key);
        if (result == 0 && value->flags != inf_flag::keyOnly) {
            const platform::RegistryValue stored = value->stored();
            result = key.setValue(value->name, stored.type, stored.data);
        }
    }
    return result;
}

InfFile::InfFile(std::string_view bytes) {
    read(decoded(bytes));
    resolveStrings();
}

InfFile InfFile::at(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("no file " + path);
    }
    return InfFile(std::string(std::istreambuf_iterator<char>(file), {}));
}

void InfFile::read(std::string_view text) {
    Section* current = nullptr;
    for (std::size_t number = 1; !text.empty(); ++number) {
        const std::size_t end = text.find('\n');
        if (end == text.npos || end == 0 || text[end - 1] != '\r') {
            throw InfError(number, "an end of the line in two characters");
        }
        const std::string_view whole = text.substr(0, end - 1);
        const std::string_view line = trimmed(whole.substr(0, findOutsideQuotes(whole, ";")));
        text.remove_prefix(end + 1);
        if (line.starts_with('[') && line.ends_with(']') && line.size() > 2) {
            const std::string name(line.substr(1, line.size() - 2));
            const auto [place, isNew] = sections.emplace(smallLetters(name), Section{name, {}});
            if (!isNew) {
                throw InfError(number, "each section once");
            }
            current = &place->second;
        } else if (!line.empty()) {
            if (current == nullptr) {
                throw InfError(number, "a section");
            }
            current->lines.push_back(lineIn(line, number));
        }
    }
}

void InfFile::resolveStrings() {
    if (has("Strings")) {
        for (const InfLine& line : section("Strings")) {
            if (line.key.empty() || line.fields.size() != 1 ||
                !strings.emplace(smallLetters(line.key), line.fields[0]).second) {
                throw InfError(line.number, "one text for a string, which is new");
            }
            unused.insert(smallLetters(line.key));
        }
    }
    for (auto& [name, part] : sections) {
        for (InfLine& line : part.lines) {
            line.key = resolved(line.key, line.number);
            for (std::string& field : line.fields) {
                field = resolved(field, line.number);
            }
        }
    }
}

/// A folder is named by its number between the same marks, and stays as it is.
std::string InfFile::resolved(const std::string& text, std::size_t line) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            result += text[i];
            continue;
        }
        const std::size_t end = text.find('%', i + 1);
        if (end == text.npos) {
            throw InfError(line, "a percent sign that ends the name");
        }
        const std::string name = smallLetters(std::string_view(text).substr(i + 1, end - i - 1));
        if (name.empty()) {
            result += '%';
        } else if (name.find_first_not_of("0123456789") == name.npos) {
            result += '%' + name + '%';
        } else if (const auto found = strings.find(name); found != strings.end()) {
            result += found->second;
            unused.erase(name);
        } else {
            throw InfError(line, "a string " + name);
        }
        i = end;
    }
    return result;
}

bool InfFile::has(std::string_view section) const {
    return sections.contains(smallLetters(section));
}

const std::vector<InfLine>& InfFile::section(std::string_view name) const {
    const auto found = sections.find(smallLetters(name));
    return found != sections.end() ? found->second.lines
                                   : throw InfError(0, "a section " + std::string(name));
}

std::vector<std::string> InfFile::sectionNames() const {
    std::vector<std::string> names;
    names.reserve(sections.size());
    for (const auto& [name, part] : sections) {
        names.push_back(part.name);
    }
    return names;
}

std::vector<std::string> InfFile::fields(std::string_view name, std::string_view key) const {
    std::vector<std::string> all;
    for (const InfLine& line : section(name)) {
        if (smallLetters(line.key) == smallLetters(key)) {
            all.insert(all.end(), line.fields.begin(), line.fields.end());
        }
    }
    return all;
}

std::string InfFile::field(std::string_view section, std::string_view key) const {
    const std::vector<std::string> all = fields(section, key);
    return all.empty() ? std::string() : all.front();
}

std::vector<InfRegistryValue> InfFile::registryValues(std::string_view name) const {
    std::vector<InfRegistryValue> values;
    for (const InfLine& line : section(name)) {
        InfRegistryValue value{line.number, line.field(0), line.field(1), line.field(2), 0, {}};
        value.flags = line.field(3).empty() ? inf_flag::text : numberIn(line.field(3), line.number);
        if (line.fields.size() > 4) {
            value.values.assign(line.fields.begin() + 4, line.fields.end());
        }
        checkValue(value);
        values.push_back(std::move(value));
    }
    return values;
}

std::vector<InfRegistryValue> InfFile::addedValues(std::string_view section) const {
    std::vector<InfRegistryValue> all;
    for (const std::string& name : fields(section, "AddReg")) {
        const std::vector<InfRegistryValue> values = registryValues(name);
        all.insert(all.end(), values.begin(), values.end());
    }
    return all;
}

}  // namespace korva::test
