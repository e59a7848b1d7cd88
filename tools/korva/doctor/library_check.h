// Whether hosts can use the object's library.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "korva/doctor/finding.h"

namespace korva::tool {

/// What the names of a library's functions tell. A pure function.
[[nodiscard]] Findings exportFindings(const std::filesystem::path& library,
                                      const std::vector<std::string>& exports);

/// Loads the library for as long as that takes, and asks it for its classes.  [blocks]
[[nodiscard]] Findings checkLibrary(const std::filesystem::path& library);

}  // namespace korva::tool
