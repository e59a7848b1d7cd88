// What a DSP module does without, for each function that it doesn't export.
#pragma once

#include <array>

#include "engine/dsp_module_api.h"

namespace korva::tool {

struct ModuleExport {
    const char* name;
    const char* cost;  ///< When it is missing.
};

/// In the order of `engine::dspModuleExports`.
[[nodiscard]] const std::array<ModuleExport, engine::dspModuleExports.size()>& moduleExports() noexcept;

}  // namespace korva::tool
