// .reg text: changes of a registry, written so that people can read them and other registries take them.
#pragma once

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/registry.h"

namespace korva::tool {

/// What a text asks for, in its order. A line with a key makes the key, also if no value follows.
struct RegText {
    std::vector<platform::RegistryChange> changes;
    std::vector<std::size_t> lines;  ///< Where each change begins, counted from 1.
};

/// A text that can't be understood: what was expected, and in which line, counted from 1.
class RegTextError : public std::runtime_error {
public:
    RegTextError(std::size_t lineNumber, const std::string& expected)
        : std::runtime_error(expected), line(lineNumber) {}

    std::size_t line;
};

/// Longer texts are refused, and those whose changes would take more memory than the second.
inline constexpr std::size_t maxRegTextBytes = std::size_t{128} << 20;
inline constexpr std::size_t maxRegChangesBytes = std::size_t{512} << 20;

/// Reads "Windows Registry Editor Version 5.00", in UTF-16LE with its byte order mark or in UTF-8 with or
/// without one, and lines that end in CR, LF or both. All or nothing: raises `RegTextError`. A last line that
/// isn't ended counts as cut short.
[[nodiscard]] RegText readRegText(std::span<const std::byte> bytes);

/// Writes changes as `readRegText` gives them: each key is made before what happens in it. UTF-16LE with its
/// mark and CRLF, the form that every reader of such files understands. Data are kept to the byte.
///
/// Raises `std::invalid_argument` for a key whose name has a line break: the format has no way to write one.
[[nodiscard]] std::vector<std::byte> writeRegText(std::span<const platform::RegistryChange> changes);

}  // namespace korva::tool
