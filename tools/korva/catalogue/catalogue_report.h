// What the catalogue holds, for people and for programs.
#pragma once

#include <string>

#include "params/catalogue.h"

namespace korva::tool {

/// All engines with their modules, and what they add up to.
[[nodiscard]] std::string enginesText();
[[nodiscard]] std::string enginesJson();

/// One engine, and a line for each of its parameters in the order in which they are applied.
[[nodiscard]] std::string engineText(const params::ParamLayout& layout);
[[nodiscard]] std::string engineJson(const params::ParamLayout& layout);

}  // namespace korva::tool
