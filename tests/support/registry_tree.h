// What lies below a key of the registry, as text to compare.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "platform/unicode.h"

namespace korva::test {

/// A value as text: a string with its terminator, a number, and anything else by its type and size.
[[nodiscard]] inline std::string valueText(const platform::RegistryValue& value) {
    namespace type = platform::registry_type;
    std::vector<WCHAR> units(value.data.size() / sizeof(WCHAR));
    if (!units.empty()) {
        std::memcpy(units.data(), value.data.data(), units.size() * sizeof(WCHAR));
    }
    if (value.type == type::string && value.data.size() % sizeof(WCHAR) == 0 && !units.empty() &&
        units.back() == 0) {
        units.pop_back();
        return "'" + platform::toUtf8({units.data(), units.size()}) + "'";
    }
    if (std::uint32_t number = 0; value.type == type::dword && value.data.size() == sizeof(number)) {
        std::memcpy(&number, value.data.data(), sizeof(number));
        return std::to_string(number);
    }
    return "type " + std::to_string(value.type) + " of " + std::to_string(value.data.size()) + " bytes";
}

/// One value of a key; "none" if it isn't there.
[[nodiscard]] inline std::string valueAt(platform::RegistryRoot root, std::string_view path,
                                         std::string_view name) {
    platform::RegistryKey key;
    platform::RegistryValue value;
    const bool isThere =
        platform::RegistryKey::root(root).open(path, platform::RegistryAccess::read, key) == 0 &&
        key.readValue(name, value) == 0;
    return isThere ? valueText(value) : "none";
}

[[nodiscard]] inline bool hasKey(platform::RegistryRoot root, std::string_view path) {
    platform::RegistryKey key;
    return platform::RegistryKey::root(root).open(path, platform::RegistryAccess::read, key) == 0;
}

/// The names of a key's values, in the registry's order.
[[nodiscard]] inline std::vector<std::string> valueNamesOf(const platform::RegistryKey& key) {
    std::vector<std::string> names;
    std::string name;
    while (key.valueName(static_cast<std::uint32_t>(names.size()), 65536, name) == 0) {
        names.push_back(name);
    }
    return names;
}

/// The names of its sub-keys, likewise.
[[nodiscard]] inline std::vector<std::string> keyNamesOf(const platform::RegistryKey& key) {
    std::vector<std::string> names;
    std::string name;
    while (key.keyName(static_cast<std::uint32_t>(names.size()), name) == 0) {
        names.push_back(name);
    }
    return names;
}

/// All keys and values below a key, sorted, a line each: `path`, and `path @name = value`. Empty if the key
/// isn't there, as if it had nothing.
[[nodiscard]] inline std::vector<std::string> treeLines(const platform::RegistryKey& parent,
                                                        const std::string& path,
                                                        const std::string& shown = {}) {
    platform::RegistryKey key;
    std::vector<std::string> lines;
    if (parent.open(path, platform::RegistryAccess::read, key) != 0) {
        return lines;
    }
    for (const std::string& name : valueNamesOf(key)) {
        platform::RegistryValue value;
        static_cast<void>(key.readValue(name, value));
        lines.push_back(shown + " @" + name + " = " + valueText(value));
    }
    for (const std::string& name : keyNamesOf(key)) {
        const std::string below = shown.empty() ? name : shown + "\\" + name;
        lines.push_back(below);
        const std::vector<std::string> deeper = treeLines(key, name, below);
        lines.insert(lines.end(), deeper.begin(), deeper.end());
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

[[nodiscard]] inline std::vector<std::string> treeLines(platform::RegistryRoot root,
                                                        const std::string& path) {
    return treeLines(platform::RegistryKey::root(root), path);
}

}  // namespace korva::test
