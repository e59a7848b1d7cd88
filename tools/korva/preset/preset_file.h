// The files that presets are in.
#pragma once

#include <string>

namespace korva::tool {

/// The whole of a file; of standard input for "-". Throws `ToolError` with what is wrong with it, also if it
/// is larger than any preset, `Interrupted` while it waits for a pipe.  [blocks]
[[nodiscard]] std::string readPresetFile(const std::string& path);

/// What messages call it.
[[nodiscard]] std::string presetFileName(const std::string& path);

}  // namespace korva::tool
