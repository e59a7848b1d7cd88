#include "framework/wait_any.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <random>
#include <system_error>
#include <thread>
#include <vector>

#include "framework/wait_block.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using Clock = std::chrono::steady_clock;
using platform::Event;
using platform::WaitHandle;

/// True once so many threads sleep in a wait, or are about to.
bool waiters(std::size_t count) {
    return test::waitUntil([count] { return waitBlockCounts().used == count; });
}

/// Counters and what was last seen of them, all of it 0.
template <std::size_t count>
struct Counters {
    std::array<WaitableCounter, count> counters;
    std::array<std::uint32_t, count> seen{};

    std::vector<WaitRegistration> registrations() {
        std::vector<WaitRegistration> all;
        for (std::size_t i = 0; i < count; ++i) {
            all.emplace_back(counters[i], seen[i]);
        }
        return all;
    }

    int wait(std::int64_t timeoutMs = waitForever) {
        auto all = registrations();
        return waitAny(all, timeoutMs);
    }

    WaitResult wait(std::span<const WaitHandle> handles, std::int64_t timeoutMs = waitForever) {
        auto all = registrations();
        return waitAny(all, handles, timeoutMs);
    }
};

TEST(WaitAny, GivesTheFirstIndexThatDiffersAlready) {
    Counters<4> waited;
    waited.counters[3].set(30);
    waited.counters[1].set(10);
    waited.counters[2].set(20);

    EXPECT_EQ(waited.wait(), 1);
    EXPECT_EQ(waited.seen, (std::array<std::uint32_t, 4>{0, 10, 0, 0}));
    EXPECT_EQ(waited.wait(), 2);
    EXPECT_EQ(waited.wait(), 3);
    EXPECT_EQ(waited.seen, (std::array<std::uint32_t, 4>{0, 10, 20, 30}));
    EXPECT_EQ(waited.wait(0), -1);
}

TEST(WaitAny, TheListDecidesNotTheOrderOfTheChanges) {
    WaitableCounter early;
    WaitableCounter late;
    early.set(1);
    late.set(1);
    std::uint32_t seenEarly = 0;
    std::uint32_t seenLate = 0;
    std::array lateFirst{WaitRegistration(late, seenLate), WaitRegistration(early, seenEarly)};

    EXPECT_EQ(waitAny(lateFirst), 0);
    EXPECT_EQ(seenLate, 1U);
    EXPECT_EQ(seenEarly, 0U);
    EXPECT_EQ(waitAny(lateFirst), 1);
}

TEST(WaitAny, IsMinusOneWhenTheLimitPasses) {
    Counters<2> waited;
    const Clock::time_point begin = Clock::now();

    EXPECT_EQ(waited.wait(30), -1);

    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(30));
    EXPECT_EQ(waited.seen, (std::array<std::uint32_t, 2>{0, 0}));
}

TEST(WaitAny, OnlyLooksWhenTheLimitIsZeroOrBelow) {
    for (const std::int64_t limitMs : {std::int64_t{0}, std::int64_t{-5}}) {
        Counters<2> waited;
        EXPECT_EQ(waited.wait(limitMs), -1);
        waited.counters[1].set(3);
        EXPECT_EQ(waited.wait(limitMs), 1);
        EXPECT_EQ(waited.seen[1], 3U);
    }
}

TEST(WaitAny, EndsByWhicheverCounterChanges) {
    constexpr std::size_t count = 8;
    for (std::size_t changed = 0; changed < count; ++changed) {
        Counters<count> waited;
        int ended = -2;
        std::thread waiter([&] { ended = waited.wait(); });
        EXPECT_TRUE(waiters(1));

        waited.counters[changed].set(77);
        waiter.join();

        EXPECT_EQ(ended, static_cast<int>(changed));
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(waited.seen[i], i == changed ? 77U : 0U);
        }
    }
}

TEST(WaitAny, StoresOnlyTheChangeThatEndedIt) {
    Counters<2> waited;
    int ended = -2;
    std::thread waiter([&] { ended = waited.wait(); });
    EXPECT_TRUE(waiters(1));

    waited.counters[0].set(1);
    waited.counters[1].set(1);
    waiter.join();

    ASSERT_TRUE(ended == 0 || ended == 1);
    EXPECT_EQ(waited.seen[static_cast<std::size_t>(ended)], 1U);
    EXPECT_EQ(waited.seen[static_cast<std::size_t>(1 - ended)], 0U);
    EXPECT_EQ(waited.wait(), 1 - ended);
}

TEST(WaitAny, TakesOneCounterTwice) {
    WaitableCounter counter(5);
    std::uint32_t first = 5;
    std::uint32_t second = 5;
    std::array waits{WaitRegistration(counter, first), WaitRegistration(counter, second)};
    EXPECT_EQ(waitAny(waits, 1), -1);

    std::thread changer([&counter] { counter.set(6); });
    EXPECT_EQ(waitAny(waits), 0);
    changer.join();

    EXPECT_EQ(waitAny(waits), 1);
    EXPECT_EQ(first, 6U);
    EXPECT_EQ(second, 6U);
    counter.set(5);
    EXPECT_EQ(waitAny(waits), 0);
}

TEST(WaitAny, WaitsForTheLimitWithoutCounters) {
    EXPECT_EQ(waitAny({}, 5), -1);
}

TEST(WaitAny, LetsTwoThreadsListTwoCountersInOppositeOrders) {
    constexpr std::uint32_t rounds = 20'000;
    WaitableCounter left;
    WaitableCounter right;
    std::thread answerer([&] {
        std::uint32_t leftSeen = 0;
        std::uint32_t rightSeen = 0;
        for (std::uint32_t round = 1; round <= rounds; ++round) {
            std::array waits{WaitRegistration(right, rightSeen), WaitRegistration(left, leftSeen)};
            while (leftSeen != round) {
                waitAny(waits);
            }
            right.set(round);
        }
    });
    std::uint32_t leftSeen = 0;
    std::uint32_t rightSeen = 0;
    for (std::uint32_t round = 1; round <= rounds; ++round) {
        std::array waits{WaitRegistration(left, leftSeen), WaitRegistration(right, rightSeen)};
        left.set(round);
        while (rightSeen != round) {
            waitAny(waits);
        }
    }
    answerer.join();
    EXPECT_EQ(left.get(), rounds);
    EXPECT_EQ(right.get(), rounds);
}

TEST(WaitAny, LosesNoChangeOfSeveralCountersOnSeveralThreads) {
    constexpr std::uint32_t perCounter = 10'000;
    std::array<WaitableCounter, 3> counters;
    std::vector<std::thread> threads;
    for (std::size_t offset = 0; offset < 3; ++offset) {
        threads.emplace_back([&counters, offset] {
            std::array<std::uint32_t, 3> seen{};
            while (seen != std::array{perCounter, perCounter, perCounter}) {
                std::vector<WaitRegistration> waits;
                for (std::size_t i = 0; i < 3; ++i) {
                    const std::size_t index = (i + offset) % 3;
                    waits.emplace_back(counters[index], seen[index]);
                }
                ASSERT_GE(waitAny(waits), 0);
            }
        });
        threads.emplace_back([&counter = counters[offset]] {
            for (std::uint32_t i = 0; i < perCounter; ++i) {
                counter.add(1);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(waitBlockCounts().used, 0U);
}

TEST(WaitAnyFlag, EndsAWaitAlthoughTheValueCameBack) {
    for (int round = 0; round < 200; ++round) {
        WaitableCounter counter(1);
        std::atomic<std::uint64_t> done{0};
        int ended = -2;
        std::thread waiter([&] {
            WaitRegistration registration(counter, done);
            ended = waitAny({&registration, 1});
        });
        if (round % 2 == 0) {
            EXPECT_TRUE(waiters(1));
        }

        counter.subtract(1);
        done.store(1);
        counter.add(1);
        waiter.join();

        EXPECT_EQ(ended, 0);
        EXPECT_EQ(counter.get(), 1U);
    }
}

TEST(WaitAnyFlag, ThatIsSetAlreadyEndsTheWaitAtOnce) {
    WaitableCounter counter;
    std::uint32_t seen = 0;
    const std::atomic<std::uint64_t> done{1};
    std::array waits{WaitRegistration(counter, seen), WaitRegistration(counter, done)};
    EXPECT_EQ(waitAny(waits), 1);
    EXPECT_EQ(waitAny(waits, 0), 1);
}

TEST(WaitAnyFlag, ThatIsNotSetKeepsTheWaitGoingHoweverTheValueChanges) {
    WaitableCounter counter;
    const std::atomic<std::uint64_t> done{0};
    int ended = -2;
    std::thread waiter([&] {
        WaitRegistration registration(counter, done);
        ended = waitAny({&registration, 1}, 50);
    });
    EXPECT_TRUE(waiters(1));
    for (std::uint32_t i = 0; i < 100; ++i) {
        counter.set(i);
    }
    waiter.join();
    EXPECT_EQ(ended, -1);
}

TEST(WaitAnyFlag, StandsBesideAValueThatIsWaitedFor) {
    WaitableCounter counter;
    WaitableCounter other;
    const std::atomic<std::uint64_t> done{0};
    std::uint32_t seen = 0;
    int ended = -2;
    std::thread waiter([&] {
        std::array waits{WaitRegistration(counter, done), WaitRegistration(other, seen)};
        ended = waitAny(waits);
    });
    EXPECT_TRUE(waiters(1));
    counter.add(1);
    other.add(4);
    waiter.join();
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(seen, 4U);
}

TEST(WaitAnyHandles, TellOfACounterThatDiffersAlready) {
    Counters<2> waited;
    const Event event;
    const std::array handles{event.handle()};
    waited.counters[1].set(6);

    const WaitResult result = waited.wait(handles);

    EXPECT_EQ(result.counter, 1);
    EXPECT_EQ(result.handle, -1);
    EXPECT_EQ(waited.seen[1], 6U);
}

TEST(WaitAnyHandles, TellOfTheLowestHandleThatIsSignalledAlready) {
    Counters<1> waited;
    std::array<Event, 3> events;
    const std::array handles{events[0].handle(), events[1].handle(), events[2].handle()};
    events[2].signal();
    events[1].signal();

    for (const std::int64_t limitMs : {waitForever, std::int64_t{10}, std::int64_t{0}, std::int64_t{-1}}) {
        const WaitResult result = waited.wait(handles, limitMs);
        EXPECT_EQ(result.handle, 1) << "it stays signalled";
        EXPECT_EQ(result.counter, -1);
    }
    events[1].reset();
    EXPECT_EQ(waited.wait(handles).handle, 2);
}

TEST(WaitAnyHandles, AreWokenByEachHandleAndByEachCounter) {
    for (int which = 0; which < 4; ++which) {
        Counters<2> waited;
        std::array<Event, 2> events;
        const std::array handles{events[0].handle(), events[1].handle()};
        WaitResult result;
        std::thread waiter([&] { result = waited.wait(handles); });
        EXPECT_TRUE(waiters(1));

        const auto index = static_cast<std::size_t>(which % 2);
        which < 2 ? events[index].signal() : waited.counters[index].set(1);
        waiter.join();

        EXPECT_EQ(result.handle, which < 2 ? which : -1);
        EXPECT_EQ(result.counter, which < 2 ? -1 : which - 2);
    }
}

TEST(WaitAnyHandles, MissNoChangeThatComesWhileTheWaitBegins) {
    const Event never;
    const std::array handles{never.handle()};
    for (int round = 0; round < 2000; ++round) {
        Counters<1> waited;
        WaitResult result;
        std::thread waiter([&] { result = waited.wait(handles, 20'000); });
        EXPECT_TRUE(waiters(1));
        waited.counters[0].set(1);
        waiter.join();
        ASSERT_EQ(result.counter, 0) << "round " << round;
    }
}

TEST(WaitAnyHandles, AreBothMinusOneWhenTheLimitPasses) {
    Counters<1> waited;
    const Event event;
    const std::array handles{event.handle()};
    for (const std::int64_t limitMs : {std::int64_t{30}, std::int64_t{0}, std::int64_t{-1}}) {
        const Clock::time_point begin = Clock::now();
        const WaitResult result = waited.wait(handles, limitMs);
        EXPECT_EQ(result.counter, -1);
        EXPECT_EQ(result.handle, -1);
        EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(limitMs));
    }
}

TEST(WaitAnyHandles, TellOfBothWhenBothCame) {
    // Whether the wait sees both is a matter of moments; what it doesn't tell of is there for the next wait.
    for (int round = 0; round < 200; ++round) {
        Counters<1> waited;
        Event event;
        const std::array handles{event.handle()};
        std::thread changer([&] {
            waited.counters[0].set(1);
            event.signal();
        });
        WaitResult all = waited.wait(handles);
        changer.join();
        const WaitResult rest = waited.wait(handles, 0);

        EXPECT_TRUE(all.counter == 0 || all.handle == 0);
        EXPECT_EQ(rest.handle, all.counter == 0 || rest.counter == -1 ? 0 : -1);
        EXPECT_EQ(rest.counter, all.counter == 0 ? -1 : 0);
    }
}

TEST(WaitAnyHandles, MayBeWaitedForAlone) {
    Event event;
    const std::array handles{event.handle()};
    EXPECT_EQ(waitAny({}, handles, 5).handle, -1);
    std::thread signaller([&event] { event.signal(); });
    EXPECT_EQ(waitAny({}, handles).handle, 0);
    signaller.join();
}

TEST(WaitAnyHandles, MayBeAsManyAsABlockTakes) {
    Counters<1> waited;
    std::deque<Event> events;
    std::vector<WaitHandle> handles;
    for (std::size_t i = 0; i < EventBlock::maxHandles; ++i) {
        handles.push_back(events.emplace_back().handle());
    }
    std::thread changer([&waited] { waited.counters[0].set(1); });
    EXPECT_EQ(waited.wait(handles).counter, 0);
    changer.join();

    events.back().signal();
    EXPECT_EQ(waited.wait(handles).handle, static_cast<int>(handles.size() - 1));
}

// Systems give out the lowest number first: whatever is opened next gets that of another.
WaitHandle closedHandle() {
    const std::array<Event, 32> events;
    return events.back().handle();
}

TEST(WaitAnyHandles, ThatAreNotOpenRaiseAndLeaveNothingBehind) {
    Counters<2> waited;
    const std::array handles{closedHandle()};

    for (int i = 0; i < 50; ++i) {
        EXPECT_THROW(static_cast<void>(waited.wait(handles, 10)), std::system_error);
        EXPECT_EQ(waitBlockCounts().used, 0U);
    }
    // The counters would reach for what the failed waits left in their queues.
    waited.counters[0].set(1);
    EXPECT_EQ(waited.wait(), 0);
}

TEST(WaitAnyHandles, DoNotSeeASignalOfAWaitBefore) {
    for (int round = 0; round < 100; ++round) {
        Counters<1> waited;
        Event event;
        const std::array handles{event.handle()};
        event.signal();
        std::thread changer([&waited] { waited.counters[0].set(1); });
        static_cast<void>(waited.wait(handles));
        changer.join();
        event.reset();
        waited.seen[0] = 1;

        const WaitResult next = waited.wait(handles, 0);
        EXPECT_EQ(next.counter, -1);
        EXPECT_EQ(next.handle, -1);
    }
}

TEST(WaitAnyHandles, LoseNoChangeBesideASignal) {
    constexpr std::uint32_t rounds = 2'000;
    Counters<1> waited;
    Event event;
    const std::array handles{event.handle()};
    std::atomic<std::uint32_t> signals{0};
    std::thread changer([&] {
        for (std::uint32_t i = 0; i < rounds; ++i) {
            waited.counters[0].add(1);
            signals.fetch_add(1);
            event.signal();
        }
    });
    std::uint32_t signalsSeen = 0;
    while (waited.seen[0] < rounds || signalsSeen < rounds) {
        if (waited.wait(handles).handle == 0) {
            event.reset();
            signalsSeen = signals.load();
        }
    }
    changer.join();
    EXPECT_EQ(waited.seen[0], rounds);
}

}  // namespace
}  // namespace korva::framework
