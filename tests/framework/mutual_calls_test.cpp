// Threads that call each other while others post to them.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>

#include "framework/dispatcher.h"

namespace korva::framework {
namespace {

constexpr std::uint32_t callCount = 100'000;

/// Calls `other` again and again from its own thread, and counts what others run there.
struct Caller {
    DispatcherUse dispatcher = Dispatcher::start();
    std::uint64_t callsServed = 0;  // the dispatcher's thread only, like the next one
    std::uint64_t tasksRun = 0;

    TaskHandle callAll(Caller& other) {
        return dispatcher->post([&other] {
            for (std::uint32_t i = 0; i < callCount; ++i) {
                other.dispatcher->runSynchronously([&other] { ++other.callsServed; });
            }
        });
    }
};

// Ten times in a row: a hang shows in one run of many.
class MutualCalls : public testing::TestWithParam<int> {};

TEST_P(MutualCalls, BothComeBackWhileAThirdPostsToBoth) {
    Caller a;
    Caller b;
    std::atomic<bool> isDone{false};
    std::uint64_t posted = 0;
    const TaskHandle fromA = a.callAll(b);
    const TaskHandle fromB = b.callAll(a);
    std::thread poster([&] {
        while (!isDone.load()) {
            a.dispatcher->postAndForget([&a] { ++a.tasksRun; });
            b.dispatcher->postAndForget([&b] { ++b.tasksRun; });
            ++posted;
            std::this_thread::yield();
        }
    });

    fromA.waitUntilDone();
    fromB.waitUntilDone();
    isDone = true;
    poster.join();
    a.dispatcher = {};
    b.dispatcher = {};

    EXPECT_EQ(a.callsServed, callCount);
    EXPECT_EQ(b.callsServed, callCount);
    EXPECT_GT(posted, 0U);
    EXPECT_EQ(a.tasksRun, posted);
    EXPECT_EQ(b.tasksRun, posted);
}

INSTANTIATE_TEST_SUITE_P(TenTimes, MutualCalls, testing::Range(0, 10));

TEST(CallRing, ThreeThreadsThatCallInACircleComeBack) {
    Caller a;
    Caller b;
    Caller c;
    const TaskHandle handles[] = {a.callAll(b), b.callAll(c), c.callAll(a)};
    for (const TaskHandle& handle : handles) {
        handle.waitUntilDone();
    }
    for (Caller* caller : {&a, &b, &c}) {
        caller->dispatcher = {};
        EXPECT_EQ(caller->callsServed, callCount);
    }
}

TEST(CallRing, ACallThatComesBackToItsCallerIsServedThere) {
    const DispatcherUse a = Dispatcher::start();
    const DispatcherUse b = Dispatcher::start();
    bool ranOnA = false;
    a->runSynchronously(
        [&] { b->runSynchronously([&] { a->runSynchronously([&] { ranOnA = a->isOwnThread(); }); }); });
    EXPECT_TRUE(ranOnA);
}

}  // namespace
}  // namespace korva::framework
