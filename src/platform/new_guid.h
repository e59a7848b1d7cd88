// Identifiers that nobody has had before.
#pragma once

#include "platform/published/base_types.h"

namespace korva::platform {

/// A random GUID (version 4); all zero if the system has none to give.  [any, blocks]
[[nodiscard]] GUID newGuid() noexcept;

}  // namespace korva::platform
