// The parameters of an engine as they run.
#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

#include "framework/ref.h"
#include "params/chunk_plan.h"
#include "params/parameter.h"

namespace korva::params {

/// Parameters that share one property of a preset. References in it are the set's, which a chunk that
/// somebody holds keeps.
struct PresetChunk {
    std::vector<Parameter*> parameters;
    std::vector<std::uint32_t> sizes;  ///< Bytes of each one's default payload.
    std::uint32_t index = 0;
};

/// Where a parameter's bytes were expected in the chunks as they were laid out; see `PlannedParameter`.
struct ParamBinding {
    std::uint32_t chunk = 0;
    Parameter* parameter = nullptr;
    std::uint32_t byteOffset = 0;
};

/// All parameters of one layout, held open as long as the set lives; none for an unknown engine. Constant
/// once it is built, so any thread may read it; the parameters themselves are their owner's.
class ParameterSet {
public:
    /// In the order in which they are applied.
    [[nodiscard]] const std::vector<framework::Held<Parameter>>& parameters() const noexcept { return held; }
    [[nodiscard]] const std::vector<PresetChunk>& chunks() const noexcept { return cut; }

    /// Null if there is none. `moduleIndex` is `baseModuleIndex` for the base list: the number alone names
    /// several.
    [[nodiscard]] Parameter* find(std::uint32_t moduleIndex, std::int32_t paramId) const;
    [[nodiscard]] const ParamBinding* findBinding(std::uint32_t moduleIndex, std::int32_t paramId) const;

private:
    friend std::shared_ptr<const ParameterSet> BuildParameterSet(const GUID& engineId);
    friend std::shared_ptr<const ParameterSet> buildParameterSet(const ParamLayout& layout);

    ParameterSet() = default;
    explicit ParameterSet(const ChunkPlan& plan);

    std::vector<framework::Held<Parameter>> held;
    std::vector<PresetChunk> cut;
    std::unordered_map<std::uint64_t, ParamBinding> bindings;  ///< By module index and number.
};

/// The set of an engine, its parameters owned by the calling thread. An unknown engine's has none.  [owner]
[[nodiscard]] std::shared_ptr<const ParameterSet> BuildParameterSet(const GUID& engineId);

/// The set of a layout; null if the layout has a field of an unknown type.  [owner]
[[nodiscard]] std::shared_ptr<const ParameterSet> buildParameterSet(const ParamLayout& layout);

/// A chunk of a set, which it keeps.
[[nodiscard]] inline std::shared_ptr<const PresetChunk> shareChunk(std::shared_ptr<const ParameterSet> set,
                                                                   std::size_t index) {
    const PresetChunk* const chunk = &set->chunks()[index];
    return {std::move(set), chunk};
}

}  // namespace korva::params
