#include "params/parameter_set.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>

#include "tests/support/engines.h"

namespace korva::params {
namespace {

using framework::Ref;

TEST(ParameterSet, AnUnknownEngineHasNoParametersNotEvenTheBaseLists) {
    const auto set = BuildParameterSet(test::unknownEngine);
    ASSERT_NE(set, nullptr);
    EXPECT_TRUE(set->parameters().empty());
    EXPECT_TRUE(set->chunks().empty());
    EXPECT_EQ(set->find(baseModuleIndex, -40), nullptr);
}

TEST(ParameterSet, HasAParameterForEveryDescriptor) {
    EXPECT_EQ(BuildParameterSet(test::firstEngine)->parameters().size(), 401U);
    EXPECT_EQ(BuildParameterSet(test::secondEngine)->parameters().size(), 77U);
    EXPECT_EQ(BuildParameterSet(test::thirdEngine)->parameters().size(), 58U);
}

TEST(ParameterSet, ModuleAndNumberTogetherNameAParameter) {
    const auto set = BuildParameterSet(test::firstEngine);
    const Parameter* const base = set->find(baseModuleIndex, -5);
    const Parameter* const module = set->find(3, -5);
    ASSERT_NE(base, nullptr);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(base, module);
    EXPECT_EQ(base->paramId, -5);
    EXPECT_EQ(module->moduleIndex, 3U);
    EXPECT_EQ(set->find(6, -5), nullptr);
    EXPECT_EQ(set->find(0, 17), nullptr);
}

TEST(ParameterSet, ParametersBeginWithTheirDefaults) {
    const auto set = BuildParameterSet(test::thirdEngine);
    EXPECT_EQ(set->find(baseModuleIndex, -22)->effective.value().size(), 4U);
    EXPECT_EQ(set->find(baseModuleIndex, -22)->asFloat.value(), 1.0F);
    EXPECT_EQ(set->find(0, 3)->effective.value().size(), 48U);
    EXPECT_TRUE(set->find(baseModuleIndex, -26)->effective.value().empty());
}

TEST(ParameterSet, ChunksTogetherAreTheParametersInTheirOrder) {
    for (const ParamLayout& layout : allLayouts()) {
        const auto set = buildParameterSet(layout);
        std::size_t next = 0;
        for (std::size_t index = 0; index < set->chunks().size(); ++index) {
            const PresetChunk& chunk = set->chunks()[index];
            EXPECT_EQ(chunk.index, index);
            ASSERT_EQ(chunk.parameters.size(), chunk.sizes.size());
            for (std::size_t i = 0; i < chunk.parameters.size(); ++i, ++next) {
                EXPECT_EQ(chunk.parameters[i], set->parameters()[next].get());
                EXPECT_EQ(chunk.sizes[i], chunk.parameters[i]->CatalogueValue.value().size());
            }
        }
        EXPECT_EQ(next, set->parameters().size());
    }
}

TEST(ParameterSet, BindingsAreThoseOfThePlan) {
    const auto set = BuildParameterSet(test::firstEngine);
    const ParamBinding* const opener = set->findBinding(baseModuleIndex, -16);
    ASSERT_NE(opener, nullptr);
    EXPECT_EQ(opener->chunk, 0U);
    EXPECT_EQ(opener->byteOffset, 48U);
    EXPECT_EQ(opener->parameter, set->find(baseModuleIndex, -16));
    EXPECT_EQ(set->chunks()[1].parameters.front(), opener->parameter);
    EXPECT_EQ(set->findBinding(baseModuleIndex, -15)->byteOffset, 0U);
    EXPECT_EQ(set->findBinding(baseModuleIndex, -14)->byteOffset, 1U);
}

TEST(ParameterSet, AFieldOfAnUnknownTypeDropsTheWholeSet) {
    static constexpr ParamField strange{static_cast<ParamFieldType>(8), 4, 0, 0};
    constexpr ParamDescriptor descriptor{0, 1, 0, 0, 0, 1, &strange};
    const ParamModuleRecord module{GUID{}, ParamDescriptorList(std::span(&descriptor, 1)), 0};
    EXPECT_EQ(buildParameterSet(ParamLayout(GUID{}, std::span(&module, 1))), nullptr);
}

TEST(ParameterSet, ParametersCloseWithTheSet) {
    auto set = BuildParameterSet(test::thirdEngine);
    const Ref<Parameter> kept = Ref<Parameter>::share(set->find(0, 3));
    EXPECT_TRUE(kept->isAlive.value());
    set.reset();
    EXPECT_FALSE(kept->isAlive.value());
    EXPECT_EQ(kept->closedCounter()->get(), 1U);
}

TEST(ParameterSet, AChunkKeepsItsSet) {
    auto set = BuildParameterSet(test::thirdEngine);
    auto chunk = shareChunk(set, 3);
    const std::weak_ptr<const ParameterSet> watched = set;
    set.reset();
    EXPECT_FALSE(watched.expired());
    EXPECT_TRUE(chunk->parameters.front()->isAlive.value());
    chunk.reset();
    EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace korva::params
