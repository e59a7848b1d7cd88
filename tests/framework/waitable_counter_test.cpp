#include "framework/waitable_counter.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <limits>
#include <thread>
#include <vector>

#include "framework/ref.h"
#include "framework/wait_block.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using Clock = std::chrono::steady_clock;

/// True once so many threads sleep in a wait, or are about to.
bool waiters(std::size_t count) {
    return test::waitUntil([count] { return waitBlockCounts().used == count; });
}

TEST(WaitableCounter, BeginsWithZeroOrTheValueGiven) {
    EXPECT_EQ(WaitableCounter().get(), 0U);
    EXPECT_EQ(WaitableCounter(7).get(), 7U);
}

TEST(WaitableCounter, AddAndSubtractGiveTheNewValue) {
    WaitableCounter counter(5);
    EXPECT_EQ(counter.add(3), 8U);
    EXPECT_EQ(counter.subtract(2), 6U);
    EXPECT_EQ(counter.get(), 6U);
    counter.set(100);
    EXPECT_EQ(counter.get(), 100U);
}

TEST(WaitableCounter, GoesRoundAtItsEnds) {
    WaitableCounter counter;
    EXPECT_EQ(counter.subtract(1), 0xFFFF'FFFFU);
    EXPECT_EQ(counter.add(2), 1U);
}

TEST(WaitableCounter, WaitForZeroIsFalseWhenTheValueHasNotChanged) {
    for (const std::int64_t limitMs :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        WaitableCounter counter(4);
        std::uint32_t seen = 4;
        EXPECT_FALSE(counter.waitFor(seen, limitMs));
        EXPECT_EQ(seen, 4U);
    }
}

TEST(WaitableCounter, WaitForZeroIsTrueWhenTheValueHasChanged) {
    for (const std::int64_t limitMs :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        WaitableCounter counter(4);
        std::uint32_t seen = 3;
        EXPECT_TRUE(counter.waitFor(seen, limitMs));
        EXPECT_EQ(seen, 4U);
    }
}

TEST(WaitableCounter, WaitForGivesFalseWhenTheLimitPasses) {
    WaitableCounter counter(9);
    std::uint32_t seen = 9;
    const Clock::time_point begin = Clock::now();

    const bool changed = counter.waitFor(seen, 40);

    EXPECT_FALSE(changed);
    EXPECT_EQ(seen, 9U);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(40));
}

TEST(WaitableCounter, WaitReturnsAtOnceWhenTheValueDiffers) {
    WaitableCounter counter(2);
    std::uint32_t seen = 1;
    counter.wait(seen);
    EXPECT_EQ(seen, 2U);
}

TEST(WaitableCounter, WaitsEndWhenTheValueChanges) {
    for (const std::int64_t limitMs : {waitForever, waitForever - 1, std::int64_t{200'000'000}}) {
        WaitableCounter counter;
        std::uint32_t seen = 0;
        bool changed = false;
        std::thread waiter([&] { changed = counter.waitFor(seen, limitMs); });
        EXPECT_TRUE(waiters(1));

        counter.add(6);
        waiter.join();

        EXPECT_TRUE(changed);
        EXPECT_EQ(seen, 6U);
    }
}

TEST(WaitableCounter, IsNoSemaphoreSoOneWaitTakesAllChanges) {
    WaitableCounter counter;
    std::uint32_t seen = 0;
    counter.add(1);
    counter.add(1);
    counter.add(1);

    counter.wait(seen);

    EXPECT_EQ(seen, 3U);
    EXPECT_FALSE(counter.waitFor(seen, 0));
}

TEST(WaitableCounter, WaitDoesNotEndForTheValueThatWasSeen) {
    WaitableCounter counter(1);
    std::uint32_t seen = 1;
    std::thread waiter([&] { counter.wait(seen); });
    EXPECT_TRUE(waiters(1));

    for (int i = 0; i < 100; ++i) {
        counter.set(1);
        counter.add(0);
    }
    EXPECT_EQ(waitBlockCounts().used, 1U);
    counter.set(2);
    waiter.join();

    EXPECT_EQ(seen, 2U);
}

TEST(WaitableCounter, EachWaiterComparesWithWhatItSawItself) {
    WaitableCounter counter(1);
    std::uint32_t sawPresent = 1;
    std::uint32_t sawNext = 2;
    std::thread first([&] { counter.wait(sawPresent); });
    std::uint32_t passedAtOnce = 0;
    counter.wait(passedAtOnce);
    EXPECT_TRUE(waiters(1));

    counter.wait(sawNext);
    EXPECT_EQ(sawNext, 1U);
    counter.set(2);
    first.join();

    EXPECT_EQ(passedAtOnce, 1U);
    EXPECT_EQ(sawPresent, 2U);
}

TEST(WaitableCounter, OneChangeLetsAllWaitersGo) {
    WaitableCounter counter;
    std::array<std::uint32_t, 20> seen{};
    std::vector<std::thread> threads;
    for (std::uint32_t& own : seen) {
        threads.emplace_back([&counter, &own] { counter.wait(own); });
    }
    EXPECT_TRUE(waiters(seen.size()));

    counter.set(5);
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (const std::uint32_t own : seen) {
        EXPECT_EQ(own, 5U);
    }
}

TEST(WaitableCounter, AWaiterThatLeavesByItsLimitIsNotLookedAtAgain) {
    WaitableCounter counter;
    for (int i = 0; i < 20; ++i) {
        std::uint32_t seen = counter.get();
        EXPECT_FALSE(counter.waitFor(seen, 1));
        counter.add(1);
        EXPECT_NE(seen, counter.get());
    }
}

TEST(WaitableCounter, LosesNoChangeBetweenTwoThreadsThatAnswerEachOther) {
    constexpr std::uint32_t rounds = 20'000;
    WaitableCounter ping;
    WaitableCounter pong;
    std::thread answerer([&] {
        for (std::uint32_t seen = 0; seen < rounds;) {
            ping.wait(seen);
            pong.set(seen);
        }
    });
    std::uint32_t answered = 0;
    for (std::uint32_t round = 1; round <= rounds; ++round) {
        ping.set(round);
        pong.wait(answered);
        ASSERT_EQ(answered, round);
    }
    answerer.join();
}

TEST(WaitableCounter, UpdateRunsUnderTheMutex) {
    constexpr std::uint32_t perThread = 10'000;
    WaitableCounter counter;
    std::uint64_t guarded = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (std::uint32_t n = 0; n < perThread; ++n) {
                counter.update([&](std::uint32_t& value) {
                    ++value;
                    guarded += 2;
                });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counter.get(), 4 * perThread);
    EXPECT_EQ(counter.locked([&](std::uint32_t value) { return value + guarded; }), 12U * perThread);
}

TEST(WaitableCounter, UpdateGivesTheNewValueAndWakes) {
    WaitableCounter counter(3);
    std::uint32_t seen = 3;
    std::thread waiter([&] { counter.wait(seen); });
    EXPECT_EQ(counter.update([](std::uint32_t& value) { value *= 7; }), 21U);
    waiter.join();
    EXPECT_EQ(seen, 21U);
}

TEST(WaitableCounter, LivesAsLongAsOneShareOfIt) {
    auto first = Ref<WaitableCounter>::adopt(new WaitableCounter(8));
    const Ref<WaitableCounter> second = first;
    first = nullptr;
    EXPECT_EQ(second->get(), 8U);
}

}  // namespace
}  // namespace korva::framework
