// Keys as people write them: `HKLM\Software\Korva`.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/registry.h"

namespace korva::tool {

/// A key: below which root, and the way there.
struct KeyPlace {
    platform::RegistryRoot root = platform::RegistryRoot::localMachine;
    std::string path;  ///< Empty: the root itself.

    [[nodiscard]] bool isRoot() const { return path.empty(); }
    friend bool operator==(const KeyPlace&, const KeyPlace&) = default;
};

/// What a word names, and if that is no key, why: then `place` is empty.
struct ParsedKey {
    std::optional<KeyPlace> place;
    const char* expected = "";
};

/// Roots have a short and a long name (HKLM, HKEY_LOCAL_MACHINE), without regard to case. One backslash at
/// the end is left out.
[[nodiscard]] ParsedKey parseKey(std::string_view text);

/// With the root's long name, which every reader of .reg text knows.
[[nodiscard]] std::string keyText(platform::RegistryRoot root, std::string_view path);
[[nodiscard]] inline std::string keyText(const KeyPlace& place) {
    return keyText(place.root, place.path);
}

}  // namespace korva::tool
