// Keys of the registry as commands use them: by their words, and whole.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "korva/registry/key_place.h"
#include "platform/registry.h"

namespace korva::tool {

/// What is in a key, in the registry's order.
struct KeyContents {
    std::vector<std::string> keys;
    std::vector<std::pair<std::string, platform::RegistryValue>> values;
};

/// The key that an argument names. Throws `ToolError`.
[[nodiscard]] KeyPlace keyOfArgument(const std::string& argument);
/// A value's name: `@` is the default value's, which is empty.
[[nodiscard]] std::string nameOfArgument(const std::string& argument);
/// For people: '@' for the default value.
[[nodiscard]] std::string shownName(const std::string& name);

/// Throws where the registry itself can't be opened.
[[nodiscard]] platform::RegistryKey openRoot(const KeyPlace& place);
/// Throws, also where there is no such key.
[[nodiscard]] platform::RegistryKey openKey(const KeyPlace& place, platform::RegistryAccess access);

/// What others delete meanwhile is left out. Throws.
[[nodiscard]] KeyContents readContents(const platform::RegistryKey& key, const KeyPlace& place);

/// Shows a key and all below it, parents first. A key that points at another one gives `isLink` to
/// `skipped`, which may throw. Keys that others delete meanwhile are left out. Throws.
using VisitKey = std::function<void(const KeyPlace&, const KeyContents&)>;
using SkipKey = std::function<void(const KeyPlace&)>;
void visitTree(const platform::RegistryKey& key, const KeyPlace& place, const VisitKey& visit,
               const SkipKey& skipped);

}  // namespace korva::tool
