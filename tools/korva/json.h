// JSON as the tool prints it.
#pragma once

#include <nlohmann/json.hpp>

namespace korva::tool {

/// Members keep their order.
using Json = nlohmann::ordered_json;

}  // namespace korva::tool
