// Whether a preset chunk's bytes fit its engine.
#pragma once

#include <cstdint>
#include <string>

#include "params/chunk_plan.h"
#include "platform/registry.h"

namespace korva::tool {

/// What is wrong with the value of the plan's chunk of that number, and what the object makes of it, as it
/// goes on behind "The value ..."; empty for one that fits. A pure function.
[[nodiscard]] std::string chunkFault(const params::ChunkPlan& plan, std::uint32_t chunk,
                                     const platform::RegistryValue& stored);

}  // namespace korva::tool
