// What is different between two looks at a key and all below it.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/registry.h"

namespace korva::tool {

/// The values of each key, by the key's whole text. Without an entry the key isn't there.
using TreeState = std::map<std::string, std::map<std::string, platform::RegistryValue>>;

struct TreeChange {
    enum class Kind { createKey, deleteKey, setValue, deleteValue };

    Kind kind = Kind::createKey;
    std::string key;
    std::string name;               ///< Of the value.
    platform::RegistryValue value;  ///< What it is set to.
};

/// Deletions first, the lowest keys before those above; a deleted key tells nothing of its values. Keys that
/// are new come before their values.
[[nodiscard]] std::vector<TreeChange> changesBetween(const TreeState& before, const TreeState& after);

}  // namespace korva::tool
