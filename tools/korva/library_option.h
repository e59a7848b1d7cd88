// The option `--library FILE` of commands that need the object's library.
#pragma once

#include <filesystem>
#include <string>

namespace korva::tool {

/// The file that is named, absolute, since a library that is to be loaded is not searched for; the one beside
/// the tool if none is. Throws `ToolError` for an empty name.
[[nodiscard]] std::filesystem::path libraryFile(bool isNamed, const std::string& name);

}  // namespace korva::tool
