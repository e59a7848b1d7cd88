// Whether the DSP modules that endpoints need are there and whole.
#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "korva/doctor/finding.h"

namespace korva::tool {

/// By the modules' names, in words whose effect needs each.
using NeededModules = std::map<std::string, std::string>;

/// Loads each module that lies in `folder`, where the object looks for them, for as long as that takes. What
/// is wrong with one that nobody needs is a remark.  [blocks]
[[nodiscard]] Findings checkModules(const std::filesystem::path& folder, const NeededModules& needed);

}  // namespace korva::tool
