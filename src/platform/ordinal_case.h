// Texts that differ in case only.
#pragma once

#include "platform/unicode.h"

namespace korva::platform {

/// Whether two texts are equal unit by unit, upper and lower case taken for the same in every script, as the
/// system compares names.  [any]
[[nodiscard]] bool equalIgnoringCase(WideView a, WideView b) noexcept;

}  // namespace korva::platform
