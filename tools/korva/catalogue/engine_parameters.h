// The parameters of an engine with their places in its preset.
#pragma once

#include <cstdint>
#include <vector>

#include "params/chunk_plan.h"

namespace korva::tool {

/// One parameter, and where its bytes are while all parameters of its chunk have their default sizes.
struct ListedParameter {
    const params::ParamDescriptor* descriptor = nullptr;
    std::int32_t module = 0;     ///< -1 for the base list.
    std::uint32_t size = 0;      ///< Bytes by default.
    std::uint32_t chunk = 0;     ///< The chunk that it is in.
    std::uint32_t position = 0;  ///< Its place among the chunk's parameters, from 0.
    std::uint32_t offset = 0;    ///< Bytes of the chunk's parameters before it.
};

/// An engine, counted.
struct EngineListing {
    std::vector<ListedParameter> parameters{};  ///< In the order in which they are applied.
    std::uint32_t bytes = 0;                    ///< Of all of them by default.
    std::uint32_t chunkCount = 0;
    std::uint32_t chunkCapacity = 0;  ///< Bytes of a chunk's parameters at most, by default.
};

[[nodiscard]] EngineListing listEngine(const params::ParamLayout& layout);

}  // namespace korva::tool
