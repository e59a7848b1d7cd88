#include "platform/thread.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <list>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/wait_handles.h"

namespace korva::platform {
namespace {

void waitFor(const Event& event) {
    const std::array handles{event.handle()};
    waitForHandles(handles, waitForever);
}

/// What a thread does that waits until it is let go.
struct Gate {
    Event isRunning{};
    Event mayEnd{};
    Event atEnd{};
    std::atomic<bool> hasPassed{false};
    std::thread::id runner{};

    /// `argument` is the gate.
    static void pass(void* argument) {
        auto* const gate = static_cast<Gate*>(argument);
        gate->runner = std::this_thread::get_id();
        gate->isRunning.signal();
        waitFor(gate->mayEnd);
        gate->hasPassed = true;
        gate->atEnd.signal();
    }
};

/// A gate for the life of the program: a thread that nobody joins may touch it later than the test does.
Gate& lastingGate() {
    static auto* const gates = new std::list<Gate>;
    return gates->emplace_back();
}

std::errc errorOfJoin(Thread& thread) {
    try {
        thread.join();
    } catch (const std::system_error& error) {
        return static_cast<std::errc>(error.code().default_error_condition().value());
    }
    return std::errc{};
}

TEST(Thread, RunsItsEntryOnAThreadOfItsOwnWithTheArgument) {
    Gate gate;
    Thread thread(Gate::pass, &gate);
    waitFor(gate.isRunning);
    gate.mayEnd.signal();
    thread.join();

    EXPECT_TRUE(gate.hasPassed);
    EXPECT_NE(gate.runner, std::thread::id());
    EXPECT_NE(gate.runner, std::this_thread::get_id());
}

TEST(Thread, IsNoneUnlessStarted) {
    EXPECT_FALSE(Thread().joinable());
}

TEST(Thread, IsJoinableUntilItIsJoinedEvenAfterItEnded) {
    Gate gate;
    Thread thread(Gate::pass, &gate);
    EXPECT_TRUE(thread.joinable());
    gate.mayEnd.signal();
    waitFor(gate.atEnd);
    EXPECT_TRUE(thread.joinable());

    thread.join();

    EXPECT_FALSE(thread.joinable());
}

TEST(Thread, JoinWaitsUntilTheEntryHasReturned) {
    struct Slow {
        bool hasEnded = false;
    } slow;
    Thread thread(
        [](void* argument) {
            const Event never;
            const std::array handles{never.handle()};
            waitForHandles(handles, 50);
            static_cast<Slow*>(argument)->hasEnded = true;
        },
        &slow);

    thread.join();

    EXPECT_TRUE(slow.hasEnded);
}

TEST(Thread, JoinOfNoThreadIsAnInvalidArgument) {
    Thread none;
    EXPECT_EQ(errorOfJoin(none), std::errc::invalid_argument);

    Gate gate;
    gate.mayEnd.signal();
    Thread joined(Gate::pass, &gate);
    joined.join();
    EXPECT_EQ(errorOfJoin(joined), std::errc::invalid_argument);
}

TEST(Thread, JoinOfItselfWouldBeADeadlockAndLeavesItJoinable) {
    struct SelfJoin {
        Event mayBegin{};
        Thread thread{};
        std::errc error{};
        bool isJoinableAfter = false;
    } self;
    self.thread = Thread(
        [](void* argument) {
            auto* const own = static_cast<SelfJoin*>(argument);
            waitFor(own->mayBegin);
            own->error = errorOfJoin(own->thread);
            own->isJoinableAfter = own->thread.joinable();
        },
        &self);
    self.mayBegin.signal();
    self.thread.join();

    EXPECT_EQ(self.error, std::errc::resource_deadlock_would_occur);
    EXPECT_TRUE(self.isJoinableAfter);
}

TEST(Thread, MovingLeavesNoneBehind) {
    Gate gate;
    Thread first(Gate::pass, &gate);

    Thread second(std::move(first));
    EXPECT_FALSE(first.joinable());
    EXPECT_TRUE(second.joinable());

    Thread third;
    third = std::move(second);
    EXPECT_FALSE(second.joinable());
    EXPECT_TRUE(third.joinable());

    gate.mayEnd.signal();
    third.join();
    EXPECT_TRUE(gate.hasPassed);
}

TEST(Thread, MoveToItselfChangesNothing) {
    Gate gate;
    Thread thread(Gate::pass, &gate);
    Thread& same = thread;

    thread = std::move(same);

    EXPECT_TRUE(thread.joinable());
    gate.mayEnd.signal();
    thread.join();
    EXPECT_TRUE(gate.hasPassed);
}

TEST(Thread, MovingAnotherInLetsTheFormerRunOn) {
    Gate& former = lastingGate();
    Gate later;
    Thread thread(Gate::pass, &former);

    thread = Thread(Gate::pass, &later);
    later.mayEnd.signal();
    thread.join();

    EXPECT_FALSE(former.hasPassed);
    former.mayEnd.signal();
    waitFor(former.atEnd);
}

TEST(Thread, RunsOnWhenItIsDestroyed) {
    Gate& gate = lastingGate();
    { const Thread thread(Gate::pass, &gate); }

    EXPECT_FALSE(gate.hasPassed);
    gate.mayEnd.signal();
    waitFor(gate.atEnd);
}

TEST(Thread, RunsOnWhenItIsDetachedAndIsNoneThen) {
    Gate& gate = lastingGate();
    Thread thread(Gate::pass, &gate);

    thread.detach();
    thread.detach();

    EXPECT_FALSE(thread.joinable());
    EXPECT_FALSE(gate.hasPassed);
    gate.mayEnd.signal();
    waitFor(gate.atEnd);
}

TEST(Thread, RunsBesideManyOthers) {
    std::array<Gate, 32> gates;
    std::array<Thread, gates.size()> threads;
    for (std::size_t i = 0; i < gates.size(); ++i) {
        threads[i] = Thread(Gate::pass, &gates[i]);
    }
    for (Gate& gate : gates) {
        waitFor(gate.isRunning);
    }
    for (std::size_t i = 0; i < gates.size(); ++i) {
        gates[i].mayEnd.signal();
        threads[i].join();
        EXPECT_TRUE(gates[i].hasPassed);
    }
}

TEST(ThreadDeathTest, EndsTheProcessWhenTheEntryThrows) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
        {
            Thread thread([](void*) { throw std::runtime_error("left the entry"); }, nullptr);
            thread.join();
        },
        "");
}

}  // namespace
}  // namespace korva::platform
