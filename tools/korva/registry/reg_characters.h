// The characters of .reg text, whatever bytes they come as.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>
#include <vector>

#include "platform/unicode.h"

namespace korva::tool {

inline constexpr std::string_view regTextSignature = "Windows Registry Editor Version 5.00";

/// Surrogates may stand alone, as in the registry. Raises `RegTextError` for bytes that are no text.
[[nodiscard]] platform::WideString decodeRegText(std::span<const std::byte> bytes);

/// UTF-16LE with its byte order mark.
[[nodiscard]] std::vector<std::byte> encodeRegText(platform::WideView text);

/// The bytes of a string as registries keep them, without a terminator.
void appendUnits(std::vector<std::byte>& bytes, platform::WideView text);

/// The units that bytes hold; an odd byte at the end is left out.
[[nodiscard]] platform::WideString unitsOf(std::span<const std::byte> bytes);

/// ASCII, a unit for each character.
[[nodiscard]] inline platform::WideString widened(std::string_view ascii) {
    return {ascii.begin(), ascii.end()};
}

}  // namespace korva::tool
