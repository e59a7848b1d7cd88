#include "params/chunk_plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <tuple>
#include <vector>

#include "tests/support/engines.h"

namespace korva::params {
namespace {

ChunkPlan planOf(const GUID& engine) {
    return planChunks(*FindLayout(engine)).value();
}

const PlannedParameter& placeOf(const ChunkPlan& plan, std::uint32_t moduleIndex, std::int32_t paramId) {
    for (const PlannedParameter& parameter : plan.parameters) {
        if (parameter.moduleIndex == moduleIndex && parameter.descriptor->paramId == paramId) {
            return parameter;
        }
    }
    ADD_FAILURE() << "no parameter " << paramId;
    return plan.parameters.front();
}

struct Extent {
    std::uint32_t parameters = 0;
    std::uint32_t bytes = 0;

    friend bool operator==(const Extent&, const Extent&) = default;
};

std::vector<Extent> extentsOf(const ChunkPlan& plan) {
    std::vector<Extent> extents(plan.chunkCount);
    for (const PlannedParameter& parameter : plan.parameters) {
        ++extents[parameter.chunk].parameters;
        extents[parameter.chunk].bytes += parameter.size;
    }
    return extents;
}

TEST(ChunkPlan, AllLayoutsHaveACapacityOf2052) {
    for (const ParamLayout& layout : allLayouts()) {
        EXPECT_EQ(planChunks(layout)->capacity, 2052U);
    }
}

TEST(ChunkPlan, CountsParametersBytesAndChunksOfEachLayout) {
    struct Expected {
        GUID engine;
        std::size_t parameters;
        std::uint32_t bytes;
        std::uint32_t chunks;
    };
    for (const Expected& expected :
         {Expected{test::firstEngine, 401, 18399, 13}, Expected{test::secondEngine, 77, 4522, 4},
          Expected{test::thirdEngine, 58, 4495, 4}}) {
        const ChunkPlan plan = planOf(expected.engine);
        EXPECT_EQ(plan.parameters.size(), expected.parameters);
        EXPECT_EQ(plan.chunkCount, expected.chunks);
        std::uint32_t bytes = 0;
        for (const Extent& extent : extentsOf(plan)) {
            bytes += extent.bytes;
        }
        EXPECT_EQ(bytes, expected.bytes);
    }
}

// Found by another program, from the same table.
TEST(ChunkPlan, EachChunkHasItsParametersAndBytes) {
    using Extents = std::vector<Extent>;
    EXPECT_EQ(extentsOf(planOf(test::firstEngine)), (Extents{{21, 48},
                                                             {2, 2051},
                                                             {1, 2052},
                                                             {215, 1291},
                                                             {1, 2050},
                                                             {1, 2050},
                                                             {122, 599},
                                                             {3, 2052},
                                                             {28, 44},
                                                             {1, 2052},
                                                             {1, 2052},
                                                             {3, 2052},
                                                             {2, 6}}));
    EXPECT_EQ(extentsOf(planOf(test::secondEngine)), (Extents{{21, 48}, {2, 2051}, {1, 2052}, {53, 371}}));
    EXPECT_EQ(extentsOf(planOf(test::thirdEngine)), (Extents{{21, 48}, {2, 2051}, {1, 2052}, {34, 344}}));
}

TEST(ChunkPlan, NoChunkIsEmptyOrOverItsCapacity) {
    for (const ParamLayout& layout : allLayouts()) {
        for (const Extent& extent : extentsOf(*planChunks(layout))) {
            EXPECT_GE(extent.parameters, 1U);
            EXPECT_LE(extent.bytes, 2052U);
        }
    }
}

TEST(ChunkPlan, OrderAscendsByPriorityThenModuleThenNumber) {
    for (const ParamLayout& layout : allLayouts()) {
        const ChunkPlan plan = *planChunks(layout);
        const auto key = [](const PlannedParameter& parameter) {
            return std::tuple(parameter.descriptor->applyPriority,
                              static_cast<std::int64_t>(parameter.moduleIndex + 1U),
                              parameter.descriptor->paramId);
        };
        for (std::size_t i = 1; i < plan.parameters.size(); ++i) {
            EXPECT_LT(key(plan.parameters[i - 1]), key(plan.parameters[i]));
        }
    }
}

TEST(ChunkPlan, TheBaseListComesFirstAmongEqualPriorities) {
    const ChunkPlan plan = planOf(test::firstEngine);
    EXPECT_EQ(plan.parameters.front().moduleIndex, baseModuleIndex);
    EXPECT_EQ(plan.parameters.front().descriptor->paramId, -39);
    EXPECT_EQ(extentsOf(plan)[0], (Extent{21, 48}));
}

TEST(ChunkPlan, AParameterThatFillsItsChunkExactlyStaysInIt) {
    EXPECT_EQ(extentsOf(planOf(test::firstEngine))[7], (Extent{3, 2052}));
}

TEST(ChunkPlan, PriorityComesBeforeTheList) {
    const ChunkPlan plan = planOf(test::thirdEngine);
    const PlannedParameter& late = placeOf(plan, baseModuleIndex, -40);
    EXPECT_EQ(late.chunk, 3U);
    std::uint32_t index = 0;
    const PlannedParameter* before = nullptr;
    for (const PlannedParameter& parameter : plan.parameters) {
        if (&parameter == &late) {
            break;
        }
        index = parameter.chunk == late.chunk ? index + 1 : 0;
        before = &parameter;
    }
    EXPECT_EQ(index, 27U);
    ASSERT_NE(before, nullptr);
    EXPECT_EQ(before->moduleIndex, 0U);
    EXPECT_EQ(before->descriptor->paramId, 8);
}

TEST(ChunkPlan, TheParameterThatOpensAChunkIsBoundToTheOneBefore) {
    const ChunkPlan plan = planOf(test::firstEngine);
    const PlannedParameter& opener = placeOf(plan, baseModuleIndex, -16);
    EXPECT_EQ(opener.chunk, 1U);
    EXPECT_EQ(opener.boundChunk, 0U);
    EXPECT_EQ(opener.boundOffset, 48U);
    const PlannedParameter& second = placeOf(plan, baseModuleIndex, -15);
    EXPECT_EQ(second.boundChunk, 1U);
    EXPECT_EQ(second.boundOffset, 0U);
    const PlannedParameter& third = placeOf(plan, baseModuleIndex, -14);
    EXPECT_EQ(third.boundChunk, 1U);
    EXPECT_EQ(third.boundOffset, 1U);
}

using Sizes = std::vector<std::uint32_t>;

TEST(LeastCapacity, IsAllBytesOfWhatOneChunkIsMeantFor) {
    EXPECT_EQ(leastCapacity(Sizes{}), 0U);
    EXPECT_EQ(leastCapacity(Sizes{0, 0}), 0U);
    EXPECT_EQ(leastCapacity(Sizes{1}), 1U);
    EXPECT_EQ(leastCapacity(Sizes{500, 4, 8}), 512U);
}

TEST(LeastCapacity, OneByteMoreThanAChunkIsMeantForMakesTwo) {
    EXPECT_EQ(leastCapacity(Sizes{500, 4, 9}), 500U);
    EXPECT_EQ(leastCapacity(Sizes{4, 500, 9}), 504U) << "the two first stand together";
}

TEST(LeastCapacity, ALargeParameterIsNotParted) {
    EXPECT_EQ(leastCapacity(Sizes{1, 2052, 1}), 2052U);
}

TEST(LeastCapacity, GrowsUntilTheChunksAreFewEnough) {
    // 900 bytes are meant for two chunks, of which one takes two parameters.
    EXPECT_EQ(leastCapacity(Sizes{300, 300, 300}), 600U);
    EXPECT_EQ(leastCapacity(Sizes{300, 300, 300, 300}), 600U);
}

std::uint32_t chunksAt(const Sizes& sizes, std::uint32_t capacity) {
    std::uint32_t chunks = 1;
    std::uint32_t bytes = 0;
    for (const std::uint32_t size : sizes) {
        if (bytes + size > capacity) {
            ++chunks;
            bytes = 0;
        }
        bytes += size;
    }
    return chunks;
}

TEST(LeastCapacity, IsWhatTryingOneAfterAnotherFinds) {
    constexpr std::uint32_t seed = 20;
    std::mt19937 random(seed);
    for (int round = 0; round < 500; ++round) {
        Sizes sizes(1 + random() % 20);
        std::uint32_t total = 0;
        std::uint32_t capacity = 0;
        for (std::uint32_t& size : sizes) {
            size = static_cast<std::uint32_t>(random() % 400);
            total += size;
            capacity = std::max(capacity, size);
        }
        const std::uint32_t target = std::max((total + 511) / 512, 1U);
        while (chunksAt(sizes, capacity) > target) {
            ++capacity;
        }
        ASSERT_EQ(leastCapacity(sizes), capacity) << "seed " << seed << ", round " << round;
    }
}

TEST(ChunkPlan, AFieldOfAnUnknownTypeDropsThePlan) {
    static constexpr ParamField fields[] = {{ParamFieldType::Bool, 1, 0, 0},
                                            {static_cast<ParamFieldType>(9), 4, 0, 0}};
    constexpr ParamDescriptor descriptors[] = {{0, 1, 0, 0, 0, 1, fields}, {1, 2, 0, 0, 0, 2, fields}};
    const ParamModuleRecord module{GUID{}, ParamDescriptorList(descriptors), 0};
    EXPECT_FALSE(planChunks(ParamLayout(GUID{}, std::span(&module, 1))).has_value());
}

}  // namespace
}  // namespace korva::params
