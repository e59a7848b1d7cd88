// Files that are read whole: texts, which have to fit in memory.
#pragma once

#include <cstddef>
#include <string>

namespace korva::tool {

/// All of a file, a pipe or a device; of standard input for "-". Throws `ToolError` with what is wrong with
/// it, also if it is empty or has more than `maxBytes`, of which no more is read, and `Interrupted` while it
/// waits.  [blocks]
[[nodiscard]] std::string readWholeFile(const std::string& path, std::size_t maxBytes);

/// What messages call it.
[[nodiscard]] std::string inputName(const std::string& path);

}  // namespace korva::tool
