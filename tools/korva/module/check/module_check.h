// What `korva module check` does.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace korva::tool {

/// What a check may take, where nothing is said.
inline constexpr double usualTimeoutSeconds = 20;

/// As they stand on the command line.
struct ModuleCheckOptions {
    std::string path{};
    std::vector<std::string> only{};  ///< Empty: all.
    std::uint32_t seed = 0;
    double timeoutSeconds = usualTimeoutSeconds;  ///< For each check.
    bool list = false;
    bool json = false;
};

/// Gives the exit code. Throws `ToolError` or `Interrupted`.
[[nodiscard]] int runModuleCheck(const ModuleCheckOptions& options);

}  // namespace korva::tool
