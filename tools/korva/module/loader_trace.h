// What the system's loader finds wrong with a library, before any code of it has run.
#pragma once

#include <string>
#include <vector>

namespace korva::tool {

struct LoaderTrace {
    std::vector<std::string> missingLibraries{};  ///< That it needs, and that are nowhere.
    std::vector<std::string> missingSymbols{};    ///< That it needs, and that no library has.
    std::string fault{};  ///< What else there is, in the loader's words; mostly empty.

    [[nodiscard]] bool isClean() const {
        return missingLibraries.empty() && missingSymbols.empty() && fault.empty();
    }
};

/// Asks the loader of this program to go through all that the library at an absolute path needs. It runs as a
/// process of its own, and runs nothing of the library. Throws `ToolError` if there is no loader to ask.
/// [blocks]
[[nodiscard]] LoaderTrace traceLoader(const std::string& path);

}  // namespace korva::tool
