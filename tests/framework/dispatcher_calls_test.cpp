#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "framework/dispatcher.h"
#include "framework/wait_block.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/processor_time.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::OneTimeGate;
using test::waitUntil;

TEST(SynchronousCall, HasRunOnTheDispatchersThreadWhenItReturns) {
    const DispatcherUse worker = Dispatcher::start();
    Dispatcher* current = nullptr;
    EXPECT_TRUE(worker->runSynchronously([&] { current = Dispatcher::current(); }));
    EXPECT_EQ(current, worker.get());
}

TEST(SynchronousCall, TakesAFunctionAndItsArgument) {
    const DispatcherUse worker = Dispatcher::start();
    int number = 20;
    EXPECT_TRUE(worker->runSynchronously([](void* argument) { ++*static_cast<int*>(argument); }, &number));
    EXPECT_EQ(number, 21);
}

TEST(SynchronousCall, UsesTheCallableItselfAndNoCopy) {
    const DispatcherUse worker = Dispatcher::start();
    int count = 0;
    auto counting = [&count, own = std::make_unique<int>(0)]() mutable { count += ++*own; };
    worker->runSynchronously(counting);
    worker->runSynchronously(counting);
    const auto constant = [&count] { count += 10; };
    worker->runSynchronously(constant);
    EXPECT_EQ(count, 13);
}

TEST(SynchronousCall, ToOnesOwnDispatcherRunsAtOnceAndIsNotQueued) {
    std::atomic<int> wakes{0};
    const DispatcherUse hosted = Dispatcher::hostOnThisThread([&](Dispatcher&) { ++wakes; });
    int depth = 0;
    EXPECT_TRUE(hosted->runSynchronously([&] {
        depth = 1;
        EXPECT_TRUE(hosted->runSynchronously([&] { depth = 2; }));
    }));
    EXPECT_EQ(depth, 2);
    EXPECT_EQ(wakes, 0);
    EXPECT_FALSE(hosted->runOne());
}

TEST(SynchronousCall, ToOnesOwnDispatcherDoesNotWaitForWhatIsQueued) {
    const DispatcherUse worker = Dispatcher::start();
    bool ran = false;
    EXPECT_TRUE(worker->runSynchronously([&] {
        worker->postAndForget([] {});
        EXPECT_TRUE(worker->runSynchronously([&ran] { ran = true; }));
    }));
    EXPECT_TRUE(ran);
}

TEST(SynchronousCall, OvertakesTasks) {
    const DispatcherUse worker = Dispatcher::start();
    OneTimeGate begun;
    OneTimeGate mayEnd;
    std::vector<int> runs;
    worker->postAndForget([&] {
        begun.open();
        EXPECT_TRUE(mayEnd.pass());
    });
    EXPECT_TRUE(begun.pass());
    for (int i = 1; i <= 10; ++i) {
        worker->postAndForget([&runs, i] { runs.push_back(i); });
    }
    std::thread caller([&] { worker->runSynchronously([&runs] { runs.push_back(0); }); });
    // The worker's thread waits at the gate, so this is the caller's wait: its call is queued by now.
    EXPECT_TRUE(waitUntil([] { return waitBlockCounts().used == 1; }));
    mayEnd.open();
    caller.join();
    worker->runSynchronously([] {});
    worker->post([] {}).waitUntilDone();
    EXPECT_EQ(runs, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
}

TEST(SynchronousCall, RunsCallsOfManyThreadsOneAtATime) {
    constexpr int perThread = 2000;
    const DispatcherUse worker = Dispatcher::start();
    std::uint64_t count = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int call = 0; call < perThread; ++call) {
                EXPECT_TRUE(worker->runSynchronously([&count] { ++count; }));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(count, 4U * perThread);
}

TEST(SynchronousCall, RaisesInItsCallerWhatTheFunctionRaises) {
    const DispatcherUse worker = Dispatcher::start();
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(worker->runSynchronously([] { throw std::out_of_range("raised"); }), std::out_of_range);
    }
    EXPECT_TRUE(worker->runSynchronously([] {}));
}

TEST(SynchronousCall, ThatRaisesIsPendingNoMore) {
    std::atomic<int> wakes{0};
    const DispatcherUse hosted = Dispatcher::hostOnThisThread([&](Dispatcher&) { ++wakes; });
    bool hasRaised = false;
    std::thread caller([&] {
        try {
            hosted->runSynchronously([] { throw std::runtime_error("raised"); });
        } catch (const std::runtime_error&) {
            hasRaised = true;
        }
    });
    EXPECT_TRUE(waitUntil([&] { return wakes == 1; }));
    EXPECT_TRUE(hosted->runOne()) << "the host itself hears nothing of it";
    caller.join();
    EXPECT_TRUE(hasRaised);
    EXPECT_FALSE(hosted->runOne());
}

TEST(SynchronousCall, RaisesOnTheOwnThreadToo) {
    const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
    EXPECT_THROW(hosted->runSynchronously([] { throw std::runtime_error("raised"); }), std::runtime_error);
}

TEST(SynchronousCall, ServesTheCallsThatComeBackToItsCaller) {
    const DispatcherUse first = Dispatcher::start();
    const DispatcherUse second = Dispatcher::start();
    int depth = 0;
    EXPECT_TRUE(first->runSynchronously([&] {
        EXPECT_TRUE(second->runSynchronously([&] {
            EXPECT_TRUE(first->runSynchronously([&] {
                EXPECT_TRUE(first->isOwnThread());
                EXPECT_TRUE(second->runSynchronously([&] { depth = 4; }));
            }));
        }));
    }));
    EXPECT_EQ(depth, 4);
}

/// Two dispatchers whose threads make calls to each other.
class MutualCalls : public testing::Test {
protected:
    const DispatcherUse first = Dispatcher::start();
    const DispatcherUse second = Dispatcher::start();
    std::atomic<int> ran{0};

    TaskHandle callOften(Dispatcher& from, Dispatcher& to, int times) {
        return from.post([this, &to, times] {
            for (int i = 0; i < times; ++i) {
                to.runSynchronously([this] { ++ran; });
            }
        });
    }
};

TEST_F(MutualCalls, AtTheSameMomentAllComeBack) {
    constexpr int times = 20'000;
    const TaskHandle there = callOften(*first, *second, times);
    const TaskHandle back = callOften(*second, *first, times);
    there.waitUntilDone();
    back.waitUntilDone();
    EXPECT_EQ(ran, 2 * times);
}

TEST_F(MutualCalls, ComeBackWhileOthersPostAndCall) {
    constexpr int times = 100'000;
    const TaskHandle there = callOften(*first, *second, times);
    const TaskHandle back = callOften(*second, *first, times);
    std::atomic<bool> isOver{false};
    std::thread third([&] {
        while (!isOver) {
            first->postAndForget([] {});
            second->postAndForget([] {});
            first->runSynchronously([] {});
        }
    });
    there.waitUntilDone();
    back.waitUntilDone();
    isOver = true;
    third.join();
    EXPECT_EQ(ran, 2 * times);
}

TEST_F(MutualCalls, InACircleOfThreeComeBack) {
    constexpr int times = 5000;
    const DispatcherUse third = Dispatcher::start();
    const TaskHandle one = callOften(*first, *second, times);
    const TaskHandle two = callOften(*second, *third, times);
    const TaskHandle three = callOften(*third, *first, times);
    one.waitUntilDone();
    two.waitUntilDone();
    three.waitUntilDone();
    EXPECT_EQ(ran, 3 * times);
}

TEST_F(MutualCalls, BothRunWhenEachIsCalledBeforeItWaits) {
    for (int round = 0; round < 200; ++round) {
        // Each thread is held until the other one has begun, so both calls are on their way at once.
        OneTimeGate firstBegun;
        OneTimeGate secondBegun;
        const auto meet = [this](OneTimeGate& mine, OneTimeGate& other, Dispatcher& called) {
            mine.open();
            EXPECT_TRUE(other.pass());
            EXPECT_TRUE(called.runSynchronously([this] { ++ran; }));
        };
        const TaskHandle one = first->post([&] { meet(firstBegun, secondBegun, *second); });
        const TaskHandle two = second->post([&] { meet(secondBegun, firstBegun, *first); });
        one.waitUntilDone();
        two.waitUntilDone();
    }
    EXPECT_EQ(ran, 400);
}

TEST(SynchronousCall, RunsNoTaskOfItsCallerWhileItWaits) {
    const DispatcherUse first = Dispatcher::start();
    const DispatcherUse second = Dispatcher::start();
    std::atomic<bool> taskRan{false};
    bool ranMeanwhile = true;
    first
        ->post([&] {
            first->postAndForget([&taskRan] { taskRan = true; });
            second->runSynchronously([&] {
                first->runSynchronously([] {});
                ranMeanwhile = taskRan;
            });
        })
        .waitUntilDone();
    first->post([] {}).waitUntilDone();
    EXPECT_FALSE(ranMeanwhile);
    EXPECT_TRUE(taskRan);
}

/// What processor time a wait of half a second takes.
template <class Wait>
std::int64_t processorTimeOf(const Wait& wait) {
    const std::int64_t before = test::processorTimeMs();
    wait();
    return test::processorTimeMs() - before;
}

void passHalfASecond() {
    WaitableCounter never;
    std::uint32_t seen = 0;
    EXPECT_FALSE(never.waitFor(seen, 500));
}

TEST(SynchronousCall, SleepsWhileItWaits) {
    const DispatcherUse worker = Dispatcher::start();
    EXPECT_LT(processorTimeOf([&] { worker->runSynchronously([] { passHalfASecond(); }); }), 200);
}

TEST(SynchronousCall, SleepsWhileItWaitsInsideACall) {
    const DispatcherUse first = Dispatcher::start();
    const DispatcherUse second = Dispatcher::start();
    // The call that runs on the first thread counts as pending there all the time.
    EXPECT_LT(processorTimeOf([&] {
                  first->runSynchronously([&] { second->runSynchronously([] { passHalfASecond(); }); });
              }),
              200);
}

TEST(SynchronousCall, JoinInsideItSleepsToo) {
    const DispatcherUse first = Dispatcher::start();
    const DispatcherUse second = Dispatcher::start();
    bool hasJoined = true;
    EXPECT_LT(processorTimeOf([&] { first->runSynchronously([&] { hasJoined = second->join(500); }); }), 200);
    EXPECT_FALSE(hasJoined);
}

TEST(SynchronousCall, InsideAnotherFindsTheNestedRunOfItsThreadAsleep) {
    const DispatcherUse worker = Dispatcher::start();
    std::atomic<bool> isWaiting{false};
    std::atomic<int> runs{0};
    int served = 0;
    std::thread caller([&] {
        worker->runSynchronously([&] {
            isWaiting = true;
            while (runs < 2 && served < 1000 && worker->runOne()) {
                ++served;
            }
        });
    });
    EXPECT_TRUE(waitUntil([&] { return isWaiting.load(); }));
    worker->postAndForget([&runs] { ++runs; });
    EXPECT_TRUE(worker->runSynchronously([&runs] { ++runs; }));
    caller.join();
    EXPECT_EQ(runs, 2);
    // A round or two may find that what woke them is done already.
    EXPECT_LE(served, 4);
}

}  // namespace
}  // namespace korva::framework
