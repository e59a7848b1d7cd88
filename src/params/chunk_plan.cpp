#include "params/chunk_plan.h"

#include <algorithm>
#include <tuple>

namespace korva::params {
namespace {

/// For each chunk there are this many bytes to go round.
constexpr std::uint32_t targetBytes = 512;

/// False if a field's type is unknown.
bool addList(ChunkPlan& plan, std::uint32_t moduleIndex, const ParamDescriptorList& list) {
    for (std::uint32_t i = 0; i < list.Count(); ++i) {
        const ParamDescriptor& descriptor = list.At(i);
        if (!hasKnownFields(descriptor)) {
            return false;
        }
        plan.parameters.push_back({&descriptor, moduleIndex, payloadSize(descriptor)});
    }
    return true;
}

bool addAll(ChunkPlan& plan, const ParamLayout& layout) {
    if (!addList(plan, baseModuleIndex, BaseList())) {
        return false;
    }
    for (std::uint32_t i = 0; i < layout.ModuleCount(); ++i) {
        if (!addList(plan, layout.Module(i).moduleIndex, layout.Module(i).descriptors)) {
            return false;
        }
    }
    return true;
}

/// The module index counts as signed, so that the base list comes first.
auto applyOrder(const PlannedParameter& parameter) {
    return std::tuple(parameter.descriptor->applyPriority, static_cast<std::int32_t>(parameter.moduleIndex),
                      parameter.descriptor->paramId);
}

/// Whether chunks of `capacity` bytes are at most `target`.
bool fits(std::span<const std::uint32_t> sizes, std::uint32_t capacity, std::uint32_t target) noexcept {
    std::uint32_t count = 1;
    std::uint32_t run = 0;
    for (const std::uint32_t size : sizes) {
        run += size;
        if (run > capacity) {
            ++count;
            run = size;
        }
        if (count > target) {
            return false;
        }
    }
    return true;
}

std::vector<std::uint32_t> sizesOf(const std::vector<PlannedParameter>& parameters) {
    std::vector<std::uint32_t> sizes;
    sizes.reserve(parameters.size());
    for (const PlannedParameter& parameter : parameters) {
        sizes.push_back(parameter.size);
    }
    return sizes;
}

void cut(ChunkPlan& plan) {
    std::uint32_t chunk = 0;
    std::uint32_t offset = 0;
    std::uint32_t bytes = 0;
    std::uint32_t inChunk = 0;
    for (PlannedParameter& parameter : plan.parameters) {
        // Bound before it is known whether it still fits, and the offset starts again behind the one that
        // opens a chunk: both are what readers of bindings expect.
        parameter.boundChunk = chunk;
        parameter.boundOffset = offset;
        offset += parameter.size;
        if (inChunk > 0 && bytes + parameter.size > plan.capacity) {
            ++chunk;
            offset = 0;
            bytes = 0;
            inChunk = 0;
        }
        parameter.chunk = chunk;
        bytes += parameter.size;
        ++inChunk;
    }
    plan.chunkCount = inChunk > 0 ? chunk + 1 : 0;
}

}  // namespace

std::uint32_t leastCapacity(std::span<const std::uint32_t> sizes) noexcept {
    std::uint32_t total = 0;
    std::uint32_t largest = 0;
    for (const std::uint32_t size : sizes) {
        total += size;
        largest = std::max(largest, size);
    }
    const std::uint32_t target = std::max((total + targetBytes - 1) / targetBytes, 1U);
    std::uint32_t low = largest;
    std::uint32_t high = total;
    while (low < high) {
        const std::uint32_t middle = low + (high - low) / 2;
        if (fits(sizes, middle, target)) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return low;
}

std::optional<ChunkPlan> planChunks(const ParamLayout& layout) {
    ChunkPlan plan;
    if (!addAll(plan, layout)) {
        return std::nullopt;
    }
    std::ranges::sort(plan.parameters, {}, applyOrder);
    plan.capacity = leastCapacity(sizesOf(plan.parameters));
    cut(plan);
    return plan;
}

}  // namespace korva::params
