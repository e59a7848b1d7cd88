#include "framework/slot_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <type_traits>

namespace korva::framework {
namespace {

struct Node {
    std::uint32_t number = 0;
    std::uint32_t next = 0;
};

TEST(SlotTable, TakesNoMemoryBeforeItsFirstNode) {
    const SlotTable<Node> table;

    EXPECT_EQ(table.capacity(), 0U);
    EXPECT_EQ(table.usedCount(), 1U);
    EXPECT_EQ(table[64].number, 0U);
}

TEST(SlotTable, StartsWithFourNodesOfWhichTheFirstIsReserved) {
    SlotTable<Node> table;
    EXPECT_EQ(table.allocate(), 64U);

    EXPECT_EQ(table.capacity(), 4U);
    EXPECT_EQ(table.usedCount(), 2U);
}

TEST(SlotTable, HandlesAreIndicesTimes64AndNever0) {
    SlotTable<Node> table;

    EXPECT_EQ(table.allocate(), 64U);
    EXPECT_EQ(table.allocate(), 128U);
}

TEST(SlotTable, HandlesBelow64AreNoNodes) {
    EXPECT_FALSE(SlotTable<Node>::isNode(0));
    EXPECT_FALSE(SlotTable<Node>::isNode(63));
    EXPECT_TRUE(SlotTable<Node>::isNode(64));
}

TEST(SlotTable, NodesKeepTheirContentsWhileTheTableGrows) {
    SlotTable<Node> table;
    for (std::uint32_t number = 1; number <= 1000; ++number) {
        const SlotHandle handle = table.allocate();
        ASSERT_EQ(handle, number * 64);
        table.find(handle)->number = number;
    }

    for (std::uint32_t number = 1; number <= 1000; ++number) {
        EXPECT_EQ(table[number * 64].number, number);
    }
}

TEST(SlotTable, CapacityDoubles) {
    SlotTable<Node> table;
    std::set<std::uint32_t> capacities;
    for (int count = 0; count < 100; ++count) {
        static_cast<void>(table.allocate());
        capacities.insert(table.capacity());
    }

    EXPECT_EQ(capacities, (std::set<std::uint32_t>{4, 8, 16, 32, 64, 128}));
}

TEST(SlotTable, GrowsWhenTheLastNodeIsTaken) {
    SlotTable<Node> table;
    static_cast<void>(table.allocate());
    static_cast<void>(table.allocate());
    EXPECT_EQ(table.capacity(), 4U);

    static_cast<void>(table.allocate());

    EXPECT_EQ(table.usedCount(), 4U);
    EXPECT_EQ(table.capacity(), 8U);
}

TEST(SlotTable, AFreedHandleIsTheNextOneGivenAndIsCleared) {
    SlotTable<Node> table;
    const SlotHandle kept = table.allocate();
    const SlotHandle freed = table.allocate();
    table.find(freed)->number = 7;

    table.free(freed);
    const SlotHandle again = table.allocate();

    EXPECT_EQ(again, freed);
    EXPECT_NE(again, kept);
    EXPECT_EQ(table[again].number, 0U);
}

TEST(SlotTable, FreedHandlesComeBackLastFreedFirst) {
    SlotTable<Node> table;
    const SlotHandle first = table.allocate();
    const SlotHandle second = table.allocate();
    table.free(first);
    table.free(second);

    EXPECT_EQ(table.allocate(), second);
    EXPECT_EQ(table.allocate(), first);
    EXPECT_EQ(table.allocate(), 192U);
}

TEST(SlotTable, NoHandleIsGivenTwiceWhateverIsFreed) {
    SlotTable<Node> table;
    std::set<SlotHandle> live;
    for (std::uint32_t round = 0; round < 2000; ++round) {
        if (round % 3 == 2) {
            const SlotHandle freed = round % 2 == 0 ? *live.begin() : *live.rbegin();
            live.erase(freed);
            table.free(freed);
        } else {
            ASSERT_TRUE(live.insert(table.allocate()).second);
        }
        ASSERT_EQ(table.usedCount(), live.size() + 1);
    }
    EXPECT_FALSE(live.contains(0));
}

TEST(SlotTable, AFullTableGives0) {
    SlotTable<Node, 6> table;
    std::set<SlotHandle> given;
    for (int count = 0; count < 5; ++count) {
        given.insert(table.allocate());
    }
    ASSERT_EQ(given, (std::set<SlotHandle>{64, 128, 192, 256, 320}));

    EXPECT_EQ(table.allocate(), 0U);

    EXPECT_EQ(table.usedCount(), 6U);
    EXPECT_EQ(table.capacity(), 6U);
}

TEST(SlotTable, AFullTableTakesANodeAgainOnceOneIsFreed) {
    SlotTable<Node, 6> table;
    while (table.allocate() != 0) {
    }

    table.free(128);

    EXPECT_EQ(table.allocate(), 128U);
    EXPECT_EQ(table.allocate(), 0U);
}

TEST(SlotTable, TheLimitIsWhatTheIndexBitsOfAHandleHold) {
    EXPECT_TRUE((std::is_same_v<SlotTable<Node>, SlotTable<Node, 0x3FFFFFF>>));
}

TEST(SlotTable, AStaleHandleBehindTheCapacityGivesANodeOfZeros) {
    SlotTable<Node> table;
    const SlotHandle stale = 1000 * 64;

    EXPECT_EQ(table[stale].number, 0U);
    EXPECT_EQ(table[stale].next, 0U);
    EXPECT_EQ(table.find(stale), nullptr);
    EXPECT_EQ(table[4 * 64].next, 0U);
    EXPECT_EQ(table.find(4 * 64), nullptr);
}

TEST(SlotTable, HandleNoneGivesANodeOfZerosAndNoneToChange) {
    SlotTable<Node> table;

    EXPECT_EQ(table[0].number, 0U);
    EXPECT_EQ(table.find(0), nullptr);
    EXPECT_EQ(table.find(63), nullptr);
}

}  // namespace
}  // namespace korva::framework
