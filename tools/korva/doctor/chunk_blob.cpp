#include "korva/doctor/chunk_blob.h"

#include <fmt/core.h>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "params/preset_blob.h"

namespace korva::tool {
namespace {

std::vector<std::uint32_t> defaultSizes(const params::ChunkPlan& plan, std::uint32_t chunk) {
    std::vector<std::uint32_t> sizes;
    for (const params::PlannedParameter& parameter : plan.parameters) {
        if (parameter.chunk == chunk) {
            sizes.push_back(parameter.size);
        }
    }
    return sizes;
}

}  // namespace

std::string chunkFault(const params::ChunkPlan& plan, std::uint32_t chunk,
                       const platform::RegistryValue& stored) {
    if (stored.type != platform::registry_type::binary) {
        return "holds no bytes, so that it is passed over, and its parameters have their defaults";
    }
    std::vector<std::uint32_t> sizes = defaultSizes(plan, chunk);
    std::optional<std::span<const std::byte>> slices = params::takeOverrides(stored.data, sizes);
    if (!slices) {
        return fmt::format(
            "has {} of at least 4 bytes, so that it is passed over, and its parameters have "
            "their defaults",
            stored.data.size());
    }
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        if (!params::takeSlice(*slices, sizes[i])) {
            return fmt::format(
                "is too short, with {} bytes: only the first {} of its {} parameters are set, "
                "and the others keep what they had",
                stored.data.size(), i, sizes.size());
        }
    }
    return slices->empty() ? ""
                           : fmt::format(
                                 "is too long, with {} bytes: the last {} belong to no parameter and are "
                                 "passed over",
                                 stored.data.size(), slices->size());
}

}  // namespace korva::tool
