// Keys of the registry that have nothing in them.
#pragma once

#include <string_view>

#include "platform/registry.h"

namespace korva::platform {

/// Deletes a key below `parent` that has neither values nor sub-keys. 0 also if it has some, or isn't there.
/// Not to be used where others write to it at the same time: a value of theirs may go with it.  [any, blocks]
[[nodiscard]] RegistryResult deleteIfEmpty(const RegistryKey& parent, std::string_view path);

}  // namespace korva::platform
