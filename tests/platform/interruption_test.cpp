#include "platform/interruption.h"

#include <gtest/gtest.h>

#include <chrono>

#include "platform/wait_handles.h"

namespace korva::platform {
namespace {

using Clock = std::chrono::steady_clock;

// What an interruption does is tried with the tool, in a process of its own.

TEST(Interruption, IsNoneAtFirst) {
    EXPECT_EQ(interruption(), 0);
    catchInterruptions();
    EXPECT_EQ(interruption(), 0);
}

TEST(Interruption, WaitEndsAtASignal) {
    catchInterruptions();
    Event event;
    EXPECT_EQ(waitUntilReady(event.handle(), Direction::read, 0), Wait::limitPassed);
    event.signal();
    EXPECT_EQ(waitUntilReady(event.handle(), Direction::read, 0), Wait::ready);
    EXPECT_EQ(waitUntilReady(event.handle(), Direction::read, waitForever), Wait::ready);
}

TEST(Interruption, WaitEndsNotBeforeItsLimit) {
    catchInterruptions();
    const Event event;
    const auto begin = Clock::now();
    EXPECT_EQ(waitUntilReady(event.handle(), Direction::read, 30), Wait::limitPassed);
    EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(30));
}

TEST(Interruption, PauseLastsItsTime) {
    for (const bool isCaught : {false, true}) {
        if (isCaught) {
            catchInterruptions();
        }
        const auto begin = Clock::now();
        EXPECT_EQ(pauseFor(30), Wait::limitPassed);
        EXPECT_GE(Clock::now() - begin, std::chrono::milliseconds(30));
    }
}

}  // namespace
}  // namespace korva::platform
