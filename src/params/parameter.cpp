#include "params/parameter.h"

#include <array>
#include <bit>
#include <cstring>
#include <span>

#include "framework/describe_members.h"

namespace korva::params {
namespace {

using Layer = const framework::Observable<Parameter::Bytes> Parameter::*;

// What comes before `CatalogueValue`, which counts even if it is empty.
constexpr std::array<Layer, 4> mergedByPolicy0 = {&Parameter::OverrideTop, &Parameter::OverrideMid,
                                                  &Parameter::PresetValue, &Parameter::OverrideLow};
constexpr std::array<Layer, 2> mergedByPolicy1 = {&Parameter::OverrideTop, &Parameter::OverrideLow};
constexpr std::array<Layer, 3> mergedByPolicy2 = {&Parameter::OverrideTop, &Parameter::OverrideMid,
                                                  &Parameter::PresetValue};

std::span<const Layer> layersBeforeCatalogue(std::uint32_t sourcePolicy) noexcept {
    switch (sourcePolicy) {
        case 1:
            return mergedByPolicy1;
        case 2:
            return mergedByPolicy2;
        default:
            return mergedByPolicy0;
    }
}

std::uint32_t wordOf(std::span<const std::byte> bytes) noexcept {
    std::uint32_t word = 0;
    if (bytes.size() == sizeof(word)) {
        std::memcpy(&word, bytes.data(), sizeof(word));  // little-endian, as the processor is
    }
    return word;
}

}  // namespace

Parameter::Parameter(std::uint32_t module, const ParamDescriptor& descriptor)
    : moduleIndex(module),
      paramId(descriptor.paramId),
      category(descriptor.category),
      sourcePolicy(descriptor.sourcePolicy),
      applyPriority(descriptor.applyPriority) {}

void Parameter::describeMembers(framework::ClassInfo& info) {
    framework::describe(info, "CatalogueValue", &Parameter::CatalogueValue);
    framework::describe(info, "OverrideLow", &Parameter::OverrideLow);
    framework::describe(info, "PresetValue", &Parameter::PresetValue);
    framework::describe(info, "OverrideMid", &Parameter::OverrideMid);
    framework::describe(info, "OverrideTop", &Parameter::OverrideTop);
    framework::describe(info, "effective", &Parameter::effective);
    framework::describe(info, "asBool", &Parameter::asBool);
    framework::describe(info, "asUInt", &Parameter::asUInt);
    framework::describe(info, "asFloat", &Parameter::asFloat);
}

void Parameter::onValueChanging(framework::ObservableBase& value) {
    if (&value == &effective) {
        readEffective();
    } else {
        effective.set(merged());
    }
}

void Parameter::readEffective() {
    const std::span<const std::byte> bytes = effective.pending().bytes();
    asBool.set(bytes.size() == 1 && bytes.front() != std::byte{0});
    asUInt.set(wordOf(bytes));
    asFloat.set(std::bit_cast<float>(wordOf(bytes)));
}

const Parameter::Bytes& Parameter::merged() const noexcept {
    for (const Layer layer : layersBeforeCatalogue(sourcePolicy)) {
        if (const Bytes& bytes = (this->*layer).pending(); !bytes.empty()) {
            return bytes;
        }
    }
    return CatalogueValue.pending();
}

}  // namespace korva::params
