// What makes names equal that differ in case only.
#pragma once

#include <cstdint>

namespace korva::platform::embedded {

/// The code point that stands for all that differ from this one in case only (Unicode's simple folding);
/// itself if there is no other.  [any]
[[nodiscard]] char32_t foldCase(char32_t codePoint) noexcept;

}  // namespace korva::platform::embedded
