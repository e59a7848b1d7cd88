// What `korva preset` does.
#pragma once

#include <string>

namespace korva::tool {

/// As they stand on the command line.
struct PresetOptions {
    std::string file{};  ///< "-" is standard input.
    std::string endpoint{};
    std::string effect{};
    bool json = false;
    bool quiet = false;
};

/// Each gives the exit code. Throws `ToolError` or `Interrupted`.
[[nodiscard]] int runPresetCheck(const PresetOptions& options);
[[nodiscard]] int runPresetInstall(const PresetOptions& options);
[[nodiscard]] int runPresetDump(const PresetOptions& options);

}  // namespace korva::tool
