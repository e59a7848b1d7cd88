#include "params/parameter_set.h"

#include <optional>
#include <utility>

namespace korva::params {
namespace {

std::uint64_t bindingKey(std::uint32_t moduleIndex, std::int32_t paramId) noexcept {
    return static_cast<std::uint64_t>(moduleIndex) << 32 | static_cast<std::uint32_t>(paramId);
}

framework::Held<Parameter> makeParameter(const PlannedParameter& planned) {
    auto parameter = framework::Held<Parameter>::first(
        framework::create<Parameter>(planned.moduleIndex, *planned.descriptor));
    parameter->CatalogueValue.set(framework::SharedBytes(defaultPayload(*planned.descriptor)));
    return parameter;
}

}  // namespace

ParameterSet::ParameterSet(const ChunkPlan& plan) : cut(plan.chunkCount) {
    held.reserve(plan.parameters.size());
    bindings.reserve(plan.parameters.size());
    for (const PlannedParameter& planned : plan.parameters) {
        Parameter* const parameter = held.emplace_back(makeParameter(planned)).get();
        PresetChunk& chunk = cut[planned.chunk];
        chunk.index = planned.chunk;
        chunk.parameters.push_back(parameter);
        chunk.sizes.push_back(planned.size);
        bindings.emplace(bindingKey(planned.moduleIndex, planned.descriptor->paramId),
                         ParamBinding{planned.boundChunk, parameter, planned.boundOffset});
    }
}

Parameter* ParameterSet::find(std::uint32_t moduleIndex, std::int32_t paramId) const {
    const ParamBinding* const binding = findBinding(moduleIndex, paramId);
    return binding == nullptr ? nullptr : binding->parameter;
}

const ParamBinding* ParameterSet::findBinding(std::uint32_t moduleIndex, std::int32_t paramId) const {
    const auto found = bindings.find(bindingKey(moduleIndex, paramId));
    return found == bindings.end() ? nullptr : &found->second;
}

std::shared_ptr<const ParameterSet> BuildParameterSet(const GUID& engineId) {
    const ParamLayout* const layout = FindLayout(engineId);
    if (layout == nullptr) {
        return std::shared_ptr<const ParameterSet>(new ParameterSet);
    }
    return buildParameterSet(*layout);
}

std::shared_ptr<const ParameterSet> buildParameterSet(const ParamLayout& layout) {
    const std::optional<ChunkPlan> plan = planChunks(layout);
    if (!plan) {
        return nullptr;
    }
    return std::shared_ptr<const ParameterSet>(new ParameterSet(*plan));
}

}  // namespace korva::params
