#include "platform/wait_handles.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

namespace korva::platform {
namespace {

using Clock = std::chrono::steady_clock;

std::vector<WaitHandle> handlesOf(std::span<const Event> events) {
    std::vector<WaitHandle> handles;
    for (const Event& event : events) {
        handles.push_back(event.handle());
    }
    return handles;
}

bool isSignalled(const Event& event) {
    const std::array handles{event.handle()};
    return waitForHandles(handles, 0) == 0;
}

/// A handle that was open once.
WaitHandle closedHandle() {
    const Event event;
    return event.handle();
}

TEST(Event, IsNotSignalledAtFirst) {
    EXPECT_FALSE(isSignalled(Event()));
}

TEST(Event, StaysSignalledHoweverManyWaitForIt) {
    Event event;
    event.signal();
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(isSignalled(event));
    }
}

TEST(Event, IsNotSignalledAfterOneResetHoweverOftenItWas) {
    Event event;
    for (int i = 0; i < 5; ++i) {
        event.signal();
    }
    event.reset();
    EXPECT_FALSE(isSignalled(event));

    event.reset();
    EXPECT_FALSE(isSignalled(event));
    event.signal();
    EXPECT_TRUE(isSignalled(event));
}

TEST(Event, LetsEveryWaitingThreadGo) {
    Event event;
    std::array<int, 4> results{};
    results.fill(-2);
    std::vector<std::thread> threads;
    for (int& result : results) {
        threads.emplace_back([&event, &result] {
            const std::array handles{event.handle()};
            result = waitForHandles(handles, waitForever);
        });
    }
    event.signal();
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(results, (std::array<int, 4>{}));
}

TEST(Event, ShowsAWaiterWhatWasWrittenBeforeTheSignal) {
    constexpr int rounds = 1000;
    Event asked;
    Event answered;
    // Nothing but signals and waits orders the two threads where they use it; the thread sanitizer watches.
    int value = 0;
    std::thread other([&] {
        const std::array handles{asked.handle()};
        for (int i = 0; i < rounds; ++i) {
            waitForHandles(handles, waitForever);
            ++value;
            asked.reset();
            answered.signal();
        }
    });
    const std::array handles{answered.handle()};
    for (int i = 0; i < rounds; ++i) {
        ++value;
        asked.signal();
        waitForHandles(handles, waitForever);
        EXPECT_EQ(value, 2 * (i + 1));
        answered.reset();
    }
    other.join();
}

TEST(WaitForHandles, GivesTheLowestOfThoseThatAreSignalled) {
    std::array<Event, 5> events;
    const auto handles = handlesOf(events);
    events[4].signal();
    EXPECT_EQ(waitForHandles(handles, waitForever), 4);
    events[1].signal();
    EXPECT_EQ(waitForHandles(handles, waitForever), 1);
    events[2].signal();
    EXPECT_EQ(waitForHandles(handles, 1000), 1);
    events[1].reset();
    EXPECT_EQ(waitForHandles(handles, 0), 2);
}

TEST(WaitForHandles, LeavesThemAsTheyAre) {
    std::array<Event, 3> events;
    const auto handles = handlesOf(events);
    events[0].signal();
    events[2].signal();

    EXPECT_EQ(waitForHandles(handles, 0), 0);

    EXPECT_TRUE(isSignalled(events[0]));
    EXPECT_FALSE(isSignalled(events[1]));
    EXPECT_TRUE(isSignalled(events[2]));
}

TEST(WaitForHandles, OnlyLooksIfTheLimitIsZeroOrLess) {
    const Event event;
    const std::array handles{event.handle()};
    for (const std::int64_t limitMs :
         {std::int64_t{0}, std::int64_t{-1}, std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_EQ(waitForHandles(handles, limitMs), -1);
    }
}

TEST(WaitForHandles, WaitsForTheWholeLimit) {
    const Event event;
    const std::array handles{event.handle()};
    for (const int limitMs : {1, 17, 60}) {
        const auto begin = Clock::now();
        EXPECT_EQ(waitForHandles(handles, limitMs), -1);
        EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(limitMs));
    }
}

TEST(WaitForHandles, IsLetGoByASignalWhileItWaits) {
    Event event;
    const Event never;
    const std::array handles{never.handle(), event.handle()};
    std::thread other([&] {
        const std::array pause{never.handle()};
        waitForHandles(pause, 20);
        event.signal();
    });

    EXPECT_EQ(waitForHandles(handles, waitForever), 1);
    other.join();
}

TEST(WaitForHandles, WaitsForLimitsThatTheSystemsOwnNumbersCannotHold) {
    // Cut to 32 bits, these are 0 or 5 milliseconds, or a negative number.
    constexpr std::int64_t word = std::int64_t{1} << 32;
    for (const std::int64_t limitMs : {word, word + 5, word / 2 + 5, word - 1, waitForever - 1}) {
        Event event;
        const Event never;
        const std::array handles{event.handle()};
        std::thread other([&] {
            const std::array pause{never.handle()};
            waitForHandles(pause, 60);
            event.signal();
        });
        EXPECT_EQ(waitForHandles(handles, limitMs), 0) << limitMs;
        other.join();
    }
}

TEST(WaitForHandles, TakesAsManyAsItSaysAndNoMore) {
    static_assert(maxWaitHandles == 64);
    std::array<Event, maxWaitHandles + 1> events;
    const auto handles = handlesOf(events);
    const std::span<const WaitHandle> all = handles;
    EXPECT_EQ(waitForHandles(all.first(maxWaitHandles), 0), -1);
    events[maxWaitHandles - 1].signal();
    EXPECT_EQ(waitForHandles(all.first(maxWaitHandles), 0), static_cast<int>(maxWaitHandles) - 1);

    EXPECT_THROW(waitForHandles(all, 0), std::invalid_argument);
}

TEST(WaitForHandles, RefusesToWaitForNothing) {
    EXPECT_THROW(waitForHandles({}, 0), std::invalid_argument);
}

TEST(WaitForHandles, RefusesAHandleThatIsNotOpenEvenBehindASignalledOne) {
    EXPECT_THROW(waitForHandles(std::array{closedHandle()}, waitForever), std::system_error);

    Event event;
    event.signal();
    const std::array handles{event.handle(), closedHandle()};
    EXPECT_THROW(waitForHandles(handles, 0), std::system_error);
}

}  // namespace
}  // namespace korva::platform
