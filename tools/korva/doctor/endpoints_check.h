// What the registry has for the effects of all endpoints.
#pragma once

#include <string>
#include <vector>

#include "korva/doctor/finding.h"
#include "korva/doctor/modules_check.h"

namespace korva::tool {

/// An endpoint some effect of which has settings.
struct SetEndpoint {
    std::string id;
    std::string name;  ///< Empty if it has none.
};

struct EndpointsReport {
    Findings findings;
    std::vector<SetEndpoint> endpoints;
    NeededModules modules;
};

/// Goes through the user sets of all endpoints. Throws `ToolError` where the registry can't be read. [blocks]
[[nodiscard]] EndpointsReport checkEndpoints();

}  // namespace korva::tool
