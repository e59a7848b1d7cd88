// What to say of keys that point at others.
#pragma once

#include <string>

namespace korva::tool {

/// Both of the key at `path` below HKEY_LOCAL_MACHINE.
[[nodiscard]] std::string linkCause(const std::string& path);
[[nodiscard]] std::string linkRemedy(const std::string& path);

/// How the key at `path` is made.
[[nodiscard]] std::string makeKeyRemedy(const std::string& path);

}  // namespace korva::tool
