// Whether objects can show themselves to tools.
#pragma once

#include <string>
#include <vector>

#include "korva/doctor/endpoints_check.h"
#include "korva/doctor/finding.h"
#include "platform/registry.h"

namespace korva::tool {

/// A key that is looked for: where it is below HKEY_LOCAL_MACHINE, and what its opening gives.
struct OpenedKey {
    std::string path;
    platform::RegistryResult code = 0;
};

struct TelemetryFacts {
    OpenedKey base;
    OpenedKey instances;
    struct VolatileSet {
        SetEndpoint endpoint;
        OpenedKey key;
    };
    std::vector<VolatileSet> volatileSets;  ///< Empty where the system has such sets itself.
};

/// A pure function.
[[nodiscard]] Findings telemetryFindings(const TelemetryFacts& facts);

/// For the endpoints that have settings. Throws `ToolError` where the registry can't be read.  [blocks]
[[nodiscard]] Findings checkTelemetry(const std::vector<SetEndpoint>& endpoints);

}  // namespace korva::tool
