// Keys that dead processes left.
#pragma once

#include "korva/doctor/finding.h"
#include "korva/monitor/instance_keys.h"

namespace korva::tool {

/// A pure function. What can't be listed because the way to it is a link is another check's matter.
[[nodiscard]] Findings instanceFindings(const std::vector<InstanceKey>& keys);

/// Throws `ToolError` where the registry can't be read.  [blocks]
[[nodiscard]] Findings checkInstances();

}  // namespace korva::tool
