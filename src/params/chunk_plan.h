// In what order an engine's parameters are applied, and how they are cut into preset chunks.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "params/catalogue.h"

namespace korva::params {

/// One parameter's place.
struct PlannedParameter {
    const ParamDescriptor* descriptor = nullptr;
    std::uint32_t moduleIndex = 0;  ///< `baseModuleIndex` for the base list.
    std::uint32_t size = 0;         ///< Bytes of its default payload.
    std::uint32_t chunk = 0;        ///< The chunk that it is in.
    /// What a binding tells: the chunk and the byte offset where the parameter would stand if the chunk had
    /// not been full. The one that opens a chunk so has the chunk before, and doesn't count in its own.
    std::uint32_t boundChunk = 0;
    std::uint32_t boundOffset = 0;
};

/// The parameters of a layout in the order in which they are applied: ascending by priority, then by module,
/// the base list before all, then by number.
struct ChunkPlan {
    std::vector<PlannedParameter> parameters;
    std::uint32_t capacity = 0;    ///< Bytes of a chunk at most.
    std::uint32_t chunkCount = 0;  ///< Chunks are runs of parameters, one after another.
};

/// The least number of bytes in a chunk by which parameters of these sizes, in this order, come to no more
/// chunks than one for every 512 bytes begun; none of them is parted.  [any]
[[nodiscard]] std::uint32_t leastCapacity(std::span<const std::uint32_t> sizes) noexcept;

/// Cuts by the least capacity. Nothing if a descriptor has a field of an unknown type. A pure function of the
/// layout.  [any]
[[nodiscard]] std::optional<ChunkPlan> planChunks(const ParamLayout& layout);

}  // namespace korva::params
