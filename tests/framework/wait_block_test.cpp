#include "framework/wait_block.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

#include "framework/wait_any.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

bool usedBlocks(std::size_t count) {
    return test::waitUntil([count] { return waitBlockCounts().used == count; });
}

/// Threads that wait for a counter until they are let go.
class Waiters {
public:
    explicit Waiters(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            threads.emplace_back([this] {
                std::uint32_t seen = 0;
                counter.wait(seen);
            });
        }
    }

    void letGo() {
        counter.set(1);
        for (std::thread& thread : threads) {
            thread.join();
        }
        threads.clear();
    }

private:
    WaitableCounter counter;
    std::vector<std::thread> threads;
};

/// The pools as a process begins with them.
class WaitBlocks : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(usedBlocks(0));
        freeUnusedWaitBlocks();
        ASSERT_EQ(waitBlockCounts().all, 0U);
    }
};

void waitBriefly() {
    WaitableCounter counter;
    std::uint32_t seen = 0;
    EXPECT_FALSE(counter.waitFor(seen, 1));
}

void waitBrieflyWithAHandle() {
    const platform::Event event;
    const std::array handles{event.handle()};
    EXPECT_EQ(waitAny({}, handles, 1).handle, -1);
}

TEST_F(WaitBlocks, AreMadeByTheFirstWaitOfEachKindSixteenAtATime) {
    waitBriefly();
    EXPECT_EQ(waitBlockCounts().all, 16U);
    waitBrieflyWithAHandle();
    EXPECT_EQ(waitBlockCounts().all, 32U);
    EXPECT_EQ(waitBlockCounts().used, 0U);
}

TEST_F(WaitBlocks, AreNotNeededByAWaitThatNeedNotBegin) {
    WaitableCounter counter(1);
    std::uint32_t seen = 0;
    counter.wait(seen);
    EXPECT_FALSE(counter.waitFor(seen, 0));
    EXPECT_EQ(waitBlockCounts().all, 0U);
}

TEST_F(WaitBlocks, AreInUseWhileTheirThreadsWaitAndUnusedAfterwards) {
    Waiters waiters(5);
    EXPECT_TRUE(usedBlocks(5));
    waiters.letGo();
    EXPECT_EQ(waitBlockCounts().used, 0U);
    EXPECT_EQ(waitBlockCounts().all, 16U);
}

TEST_F(WaitBlocks, DoubleWhenMoreThreadsWaitAtOnceThanThereAre) {
    Waiters first(16);
    EXPECT_TRUE(usedBlocks(16));
    EXPECT_EQ(waitBlockCounts().all, 16U);

    Waiters second(1);
    EXPECT_TRUE(usedBlocks(17));
    EXPECT_EQ(waitBlockCounts().all, 32U);

    Waiters third(16);
    EXPECT_TRUE(usedBlocks(33));
    EXPECT_EQ(waitBlockCounts().all, 64U);

    second.letGo();
    first.letGo();
    third.letGo();
    EXPECT_EQ(waitBlockCounts().used, 0U);
    EXPECT_EQ(waitBlockCounts().all, 64U);
}

TEST_F(WaitBlocks, AreUsedAgain) {
    for (int i = 0; i < 100; ++i) {
        waitBriefly();
        waitBrieflyWithAHandle();
    }
    EXPECT_EQ(waitBlockCounts().all, 32U);
    EXPECT_EQ(waitBlockCounts().used, 0U);
}

TEST_F(WaitBlocks, AreNotFreedWhileOneOfTheirKindIsInUse) {
    waitBrieflyWithAHandle();
    Waiters waiters(1);
    EXPECT_TRUE(usedBlocks(1));

    freeUnusedWaitBlocks();
    EXPECT_EQ(waitBlockCounts().all, 16U);
    EXPECT_EQ(waitBlockCounts().used, 1U);

    waiters.letGo();
    freeUnusedWaitBlocks();
    EXPECT_EQ(waitBlockCounts().all, 0U);
    waitBriefly();
    EXPECT_EQ(waitBlockCounts().all, 16U);
}

TEST_F(WaitBlocks, AreNotSignalledAtFirstWhateverHappenedToThemBefore) {
    WaitableCounter counter;
    std::uint32_t seen = 0;
    std::thread waiter([&] { counter.wait(seen); });
    counter.set(1);
    waiter.join();

    for (int i = 0; i < 16; ++i) {
        const PooledBlock<ConditionBlock> block;
        EXPECT_EQ(block->signalledIndex(), -1);
        block->sleep(WaitLimit(0));
        EXPECT_EQ(block->signalledIndex(), -1);
    }
}

}  // namespace
}  // namespace korva::framework
