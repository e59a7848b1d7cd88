// Values of the registry as people read and write them.
#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "platform/registry.h"

namespace korva::tool {

/// What a value says, if its bytes are of its type; else nothing.
struct ReadableData {
    std::variant<std::monostate, std::string, std::uint64_t, std::vector<std::string>> data;
    /// Whether the same bytes would be written for it: strings without a terminator are readable as well.
    bool isExact = false;
};
[[nodiscard]] ReadableData readableData(const platform::RegistryValue& value);

/// "sz", "dword"; the number of a type without a name, "0x12".
[[nodiscard]] std::string typeName(std::uint32_t type);

/// The data alone, for scripts: text as it is, numbers in decimal, several strings with line breaks between
/// them, all else as hexadecimal digits.
[[nodiscard]] std::string dataText(const platform::RegistryValue& value);
/// The data on one line, for people: texts whole, of many bytes the first.
[[nodiscard]] std::string dataSummary(const platform::RegistryValue& value);
[[nodiscard]] std::string hexDigits(const std::vector<std::byte>& bytes);

/// The value that a type and words for its data give: sz and the numbers take one, binary one or none,
/// multi_sz any number. Throws `ToolError` with what is wrong.
[[nodiscard]] platform::RegistryValue valueOfWords(const std::string& type,
                                                   const std::vector<std::string>& words);

}  // namespace korva::tool
