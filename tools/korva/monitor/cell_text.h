// Text in the cells of a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korva::tool {

/// What a terminal can show of a text: control characters become \xHH, which no terminal acts on, and bytes
/// that are no UTF-8 question marks.
[[nodiscard]] std::string printable(std::string_view text);

/// The cells that printable text takes: none for marks that combine, two for wide characters.
[[nodiscard]] std::size_t cellCount(std::string_view text);

/// As much of the beginning of printable text as fits.
[[nodiscard]] std::string cutTo(std::string_view text, std::size_t cells);

/// Cut or filled with spaces to just so many cells.
[[nodiscard]] std::string padTo(std::string_view text, std::size_t cells);
[[nodiscard]] std::string padLeftTo(std::string_view text, std::size_t cells);

/// With a question mark for each character beyond ASCII.
[[nodiscard]] std::string asAscii(std::string_view text);

}  // namespace korva::tool
