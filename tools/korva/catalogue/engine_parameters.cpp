#include "korva/catalogue/engine_parameters.h"

namespace korva::tool {

EngineListing listEngine(const params::ParamLayout& layout) {
    const params::ChunkPlan plan = *params::planChunks(layout);
    EngineListing listing{.chunkCount = plan.chunkCount, .chunkCapacity = plan.capacity};
    std::uint32_t position = 0;
    std::uint32_t offset = 0;
    for (const params::PlannedParameter& parameter : plan.parameters) {
        if (!listing.parameters.empty() && parameter.chunk != listing.parameters.back().chunk) {
            position = 0;
            offset = 0;
        }
        listing.parameters.push_back({parameter.descriptor, static_cast<std::int32_t>(parameter.moduleIndex),
                                      parameter.size, parameter.chunk, position, offset});
        ++position;
        offset += parameter.size;
        listing.bytes += parameter.size;
    }
    return listing;
}

}  // namespace korva::tool
