// What `korva module check` does.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korva::tool {

/// As they stand on the command line.
struct ModuleCheckOptions {
    std::string path{};
    std::vector<std::string> only{};  ///< Empty: all.
    std::uint32_t seed = 0;
    double timeoutSeconds = 20;  ///< For each check.
    bool hasOwnTimeout = false;
    bool list = false;
    bool json = false;
};

/// Gives the exit code. Throws `ToolError` or `Interrupted`.
[[nodiscard]] int runModuleCheck(const ModuleCheckOptions& options);

}  // namespace korva::tool
