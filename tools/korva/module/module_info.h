// A look at a DSP module that doesn't run it.
#pragma once

#include <string>

#include "korva/module/library_file.h"
#include "korva/module/loader_trace.h"

namespace korva::tool {

struct ModuleInfo {
    std::string path{};
    LibraryFile file{};
    LoaderTrace trace{};  ///< Empty for what is no library.

    /// Why the host would use nothing of it; empty if it would.
    [[nodiscard]] std::string fault() const;
    [[nodiscard]] bool exports(const std::string& name) const;
};

/// Throws `ToolError` if the path can't be read.  [blocks]
[[nodiscard]] ModuleInfo readModuleInfo(const std::string& path);

[[nodiscard]] std::string moduleInfoText(const ModuleInfo& info);
[[nodiscard]] std::string moduleInfoJson(const ModuleInfo& info);

}  // namespace korva::tool
