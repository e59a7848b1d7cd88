#include "services/instance_number_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <thread>
#include <vector>

namespace korva::services {
namespace {

TEST(InstanceNumberPool, HandsOutNumbersFrom0On) {
    InstanceNumberPool pool;
    for (std::uint32_t number = 0; number < 40; ++number) {
        const auto taken = pool.take();
        EXPECT_EQ(taken.number, number);
        EXPECT_EQ(taken.inUse, number + 1);
    }
}

TEST(InstanceNumberPool, ASeventeenthInstanceGets16) {
    InstanceNumberPool pool;
    for (int i = 0; i < 16; ++i) {
        static_cast<void>(pool.take());
    }
    EXPECT_EQ(pool.take().number, 16U);
}

TEST(InstanceNumberPool, TheOneThatCameBackLastIsNext) {
    InstanceNumberPool pool;
    for (int i = 0; i < 4; ++i) {
        static_cast<void>(pool.take());
    }
    EXPECT_EQ(pool.giveBack(1), 3U);
    EXPECT_EQ(pool.giveBack(3), 2U);
    EXPECT_EQ(pool.take().number, 3U);
    EXPECT_EQ(pool.take().number, 1U);
    EXPECT_EQ(pool.take().number, 4U) << "then those that were never out";
}

TEST(InstanceNumberPool, TellsHowManyAreOut) {
    InstanceNumberPool pool;
    EXPECT_EQ(pool.take().inUse, 1U);
    EXPECT_EQ(pool.take().inUse, 2U);
    EXPECT_EQ(pool.giveBack(0), 1U);
    EXPECT_EQ(pool.take().inUse, 2U);
    EXPECT_EQ(pool.giveBack(1), 1U);
    EXPECT_EQ(pool.giveBack(0), 0U);
}

TEST(InstanceNumberPool, OnceAllAreOutEverybodyGets0) {
    InstanceNumberPool pool(2);
    static_cast<void>(pool.take());
    static_cast<void>(pool.take());
    const auto third = pool.take();
    EXPECT_EQ(third.number, 0U);
    EXPECT_EQ(third.inUse, 3U);
    EXPECT_EQ(pool.take().number, 0U);
    EXPECT_EQ(pool.giveBack(1), 3U);
    EXPECT_EQ(pool.take().number, 1U);
}

TEST(InstanceNumberPool, ThreadsNeverHoldTheSameNumber) {
    constexpr std::size_t threadTotal = 4;
    InstanceNumberPool pool;
    std::vector<std::vector<std::uint32_t>> held(threadTotal);
    std::vector<std::thread> threads;
    for (auto& own : held) {
        threads.emplace_back([&pool, &own] {
            for (int i = 0; i < 2000; ++i) {
                own.push_back(pool.take().number);
                if (i % 3 == 0) {
                    pool.giveBack(own.front());
                    own.erase(own.begin());
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::set<std::uint32_t> distinct;
    std::size_t count = 0;
    for (const auto& own : held) {
        distinct.insert(own.begin(), own.end());
        count += own.size();
    }
    EXPECT_EQ(distinct.size(), count);
    EXPECT_EQ(pool.take().inUse, count + 1);
}

TEST(InstanceNumber, IsGivenBackAtItsEnd) {
    std::optional<InstanceNumber> first(std::in_place);
    const InstanceNumber second;
    EXPECT_EQ(first->get(), 0U);
    EXPECT_TRUE(first->wasFirst());
    EXPECT_EQ(second.get(), 1U);
    EXPECT_FALSE(second.wasFirst());
    first.reset();
    const InstanceNumber third;
    EXPECT_EQ(third.get(), 0U);
    EXPECT_FALSE(third.wasFirst());
}

TEST(InstanceNumber, IsGivenBackOnceAndTellsWhetherItWasTheLast) {
    InstanceNumber first;
    InstanceNumber second;
    EXPECT_FALSE(first.giveBack());
    EXPECT_TRUE(second.giveBack());
    EXPECT_FALSE(second.giveBack());
    const InstanceNumber next;
    EXPECT_TRUE(next.wasFirst()) << "nothing was counted twice";
}

}  // namespace
}  // namespace korva::services
