// The library that this is linked into.
#pragma once

#include <windef.h>

namespace korva::platform {

/// The handle of the library, or program; no reference on it.  [any]
[[nodiscard]] HMODULE ownModule() noexcept;

}  // namespace korva::platform
