// Text between UTF-8, which this system keeps, and UTF-16, which published interfaces carry.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/published/base_types.h"

namespace korva::platform {

using WideString = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;

/// What can't be converted (a surrogate alone, bytes that are no UTF-8) becomes U+FFFD.  [any]
[[nodiscard]] WideString toWide(std::string_view utf8);
[[nodiscard]] std::string toUtf8(WideView wide);

/// Nothing where a character would be lost.  [any]
[[nodiscard]] std::optional<WideString> exactWide(std::string_view utf8);
[[nodiscard]] std::optional<std::string> exactUtf8(WideView wide);

/// Takes the first character off a text that isn't empty. Nothing, and the text as it was, if it begins with
/// what is no UTF-8.  [any]
[[nodiscard]] std::optional<char32_t> takeCharacter(std::string_view& utf8);
/// Adds a character, which is no surrogate, to the end of a text.  [any]
void appendCharacter(std::string& utf8, char32_t character);

}  // namespace korva::platform
