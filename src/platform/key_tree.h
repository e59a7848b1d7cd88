// Keys of the registry with all that is in them.
#pragma once

#include <string_view>

#include "platform/registry.h"

namespace korva::platform {

/// Deletes a key below `parent` and, one after the other, all keys below it, whoever made them. A key there
/// that points elsewhere is deleted itself: what it points at stays. 0 also if there is no such key, 87 for
/// an empty path; else why some of it remains.  [any, blocks]
[[nodiscard]] RegistryResult deleteKeyTree(const RegistryKey& parent, std::string_view path);

}  // namespace korva::platform
