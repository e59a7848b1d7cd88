// Several strings in one text, each with a zero behind it: the form of the registry's lists of strings.
#pragma once

#include <cstddef>

#include "platform/unicode.h"

namespace korva::platform {

/// As many as there are zeros, the one counted that a text lacks at its end. So the closing empty string that
/// writers of such lists use to add counts as one more; only a text of no length has none.  [any]
[[nodiscard]] std::size_t stringCount(WideView text) noexcept;

/// Takes the first string off the front of `rest`, which has one, and gives it without its zero.  [any]
[[nodiscard]] WideView takeString(WideView& rest) noexcept;

}  // namespace korva::platform
