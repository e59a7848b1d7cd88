#include "params/parameter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string_view>
#include <thread>
#include <vector>

#include "framework/class_info.h"
#include "framework/dispatcher.h"
#include "tests/support/byte_list.h"

namespace korva::params {
namespace {

using framework::create;
using framework::Ref;
using test::sharedBytes;

Ref<Parameter> parameterOf(std::uint32_t sourcePolicy) {
    const ParamDescriptor descriptor{0, 7, 3, sourcePolicy, 50, 0, nullptr};
    return create<Parameter>(2U, descriptor);
}

/// Sets every layer to its own number, the catalogue's to 1.
void fillLayers(Parameter& parameter) {
    parameter.CatalogueValue.set(sharedBytes(1));
    parameter.OverrideLow.set(sharedBytes(2));
    parameter.PresetValue.set(sharedBytes(3));
    parameter.OverrideMid.set(sharedBytes(4));
    parameter.OverrideTop.set(sharedBytes(5));
}

TEST(Parameter, KeepsWhatItsDescriptorTells) {
    const Ref<Parameter> parameter = parameterOf(1);
    EXPECT_EQ(parameter->moduleIndex, 2U);
    EXPECT_EQ(parameter->paramId, 7);
    EXPECT_EQ(parameter->category, 3U);
    EXPECT_EQ(parameter->sourcePolicy, 1U);
    EXPECT_EQ(parameter->applyPriority, 50U);
}

TEST(Parameter, BeginsEmpty) {
    const Ref<Parameter> parameter = parameterOf(0);
    EXPECT_TRUE(parameter->effective.value().empty());
    EXPECT_FALSE(parameter->asBool.value());
    EXPECT_EQ(parameter->asUInt.value(), 0U);
    EXPECT_EQ(parameter->asFloat.value(), 0.0F);
}

TEST(Parameter, LayersCountInTheOrderOfTheirPolicy) {
    using Layer = framework::Observable<Parameter::Bytes> Parameter::*;
    struct Expected {
        std::uint32_t policy;
        std::vector<Layer> order;
    };
    const std::vector<Expected> policies = {
        {0,
         {&Parameter::OverrideTop, &Parameter::OverrideMid, &Parameter::PresetValue, &Parameter::OverrideLow,
          &Parameter::CatalogueValue}},
        {1, {&Parameter::OverrideTop, &Parameter::OverrideLow, &Parameter::CatalogueValue}},
        {2,
         {&Parameter::OverrideTop, &Parameter::OverrideMid, &Parameter::PresetValue,
          &Parameter::CatalogueValue}}};
    for (const Expected& expected : policies) {
        const Ref<Parameter> parameter = parameterOf(expected.policy);
        fillLayers(*parameter);
        for (const Layer layer : expected.order) {
            EXPECT_EQ(parameter->effective.value(), ((*parameter).*layer).value()) << expected.policy;
            ((*parameter).*layer).set({});
        }
        EXPECT_TRUE(parameter->effective.value().empty());
    }
}

TEST(Parameter, OfPolicy1IgnoresPresetAndMiddleLayers) {
    const Ref<Parameter> parameter = parameterOf(1);
    parameter->CatalogueValue.set(sharedBytes(1));
    parameter->PresetValue.set(sharedBytes(3));
    parameter->OverrideMid.set(sharedBytes(4));
    EXPECT_EQ(parameter->effective.value(), sharedBytes(1));
}

TEST(Parameter, OfPolicy2IgnoresTheLowLayer) {
    const Ref<Parameter> parameter = parameterOf(2);
    parameter->OverrideLow.set(sharedBytes(2));
    EXPECT_TRUE(parameter->effective.value().empty());
    parameter->CatalogueValue.set(sharedBytes(1));
    EXPECT_EQ(parameter->effective.value(), sharedBytes(1));
}

void count(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*, const void*,
           framework::Reason) {
    ++*static_cast<int*>(context);
}

TEST(Parameter, EqualBytesSetAgainNotifyNobody) {
    const Ref<Parameter> parameter = parameterOf(0);
    parameter->CatalogueValue.set(sharedBytes(1, 2));
    int heard = 0;
    parameter->effective.subscribe(&heard, nullptr, &count);
    parameter->PresetValue.set(sharedBytes(1, 2));
    EXPECT_EQ(heard, 0);
    parameter->PresetValue.set(sharedBytes(1, 3));
    EXPECT_EQ(heard, 1);
    parameter->PresetValue.set(sharedBytes(1, 3));
    EXPECT_EQ(heard, 1);
}

struct Look {
    Parameter* parameter;
    Parameter::Bytes effective;
};

void lookAtEffective(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                     const void*, framework::Reason) {
    Look& look = *static_cast<Look*>(context);
    look.effective = look.parameter->effective.value();
}

TEST(Parameter, EffectiveDoesNotWaitForTheLayersPublication) {
    const Ref<Parameter> parameter = parameterOf(0);
    Look look{parameter.get(), {}};
    parameter->PresetValue.subscribe(&look, &lookAtEffective, nullptr);
    parameter->PresetValue.set(sharedBytes(9));
    EXPECT_EQ(look.effective, sharedBytes(9));
}

void noteThread(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                const void*, framework::Reason) {
    *static_cast<std::thread::id*>(context) = std::this_thread::get_id();
}

TEST(Parameter, ALayerThatAnotherThreadSetsIsMergedOnTheOwners) {
    const framework::DispatcherUse worker =
        framework::Dispatcher::start(framework::RootType::of<Parameter>());
    Ref<Parameter> parameter;
    std::thread::id owner;
    std::thread::id listening;
    worker->runSynchronously([&] {
        owner = std::this_thread::get_id();
        parameter = parameterOf(0);
        parameter->effective.subscribe(&listening, nullptr, &noteThread);
    });
    parameter->OverrideTop.set(sharedBytes(4));
    EXPECT_EQ(parameter->effective.read(), sharedBytes(4));
    EXPECT_EQ(listening, owner);
    worker->runSynchronously([&] { parameter = nullptr; });
}

TEST(Parameter, OneByteIsABool) {
    const Ref<Parameter> parameter = parameterOf(0);
    for (const int byte : {1, 2, 255}) {
        parameter->PresetValue.set(sharedBytes(byte));
        EXPECT_TRUE(parameter->asBool.value()) << byte;
    }
    parameter->PresetValue.set(sharedBytes(0));
    EXPECT_FALSE(parameter->asBool.value());
    parameter->PresetValue.set(sharedBytes(1, 1));
    EXPECT_FALSE(parameter->asBool.value());
}

TEST(Parameter, FourBytesAreAWordAndAFloat) {
    const Ref<Parameter> parameter = parameterOf(0);
    parameter->PresetValue.set(sharedBytes(0x00, 0x00, 0x80, 0x3F));
    EXPECT_EQ(parameter->asUInt.value(), 0x3F800000U);
    EXPECT_EQ(parameter->asFloat.value(), 1.0F);
    parameter->PresetValue.set(sharedBytes(0x00, 0x00, 0x80));
    EXPECT_EQ(parameter->asUInt.value(), 0U);
    EXPECT_EQ(parameter->asFloat.value(), 0.0F);
    parameter->PresetValue.set(sharedBytes(1, 2, 3, 4, 5));
    EXPECT_EQ(parameter->asUInt.value(), 0U);
}

TEST(Parameter, AllLayersCanBeReachedByTheirNames) {
    const Ref<Parameter> parameter = parameterOf(0);
    const auto info = parameter->getClassInfo();
    for (const std::string_view name : {"CatalogueValue", "OverrideLow", "PresetValue", "OverrideMid",
                                        "OverrideTop", "effective", "asBool", "asUInt", "asFloat"}) {
        EXPECT_TRUE(info->observableOfName.contains(name)) << name;
    }
    const auto& member = info->observableOfName.at("OverrideTop");
    dynamic_cast<const framework::ValueMember<Parameter::Bytes>&>(*member).setByValue(*parameter,
                                                                                      sharedBytes(8));
    EXPECT_EQ(parameter->effective.value(), sharedBytes(8));
}

}  // namespace
}  // namespace korva::params
