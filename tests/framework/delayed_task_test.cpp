#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "framework/dispatcher.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using Clock = std::chrono::steady_clock;
using Place = DispatchTask::Place;
using test::OneTimeGate;
using test::waitUntil;

constexpr std::int64_t hourMs = 3'600'000;

class DelayedTask : public testing::Test {
protected:
    // A pool ends on the thread of the last of its workers, after its dispatcher has.
    void TearDown() override {
        worker = {};
        EXPECT_TRUE(waitUntil([this] { return liveThreadCount().get() == liveBefore; }));
    }

    bool waiting(std::size_t count) const {
        return waitUntil([&] { return worker->delayCounts().waiting == count; });
    }

    const std::uint32_t liveBefore = liveThreadCount().get();
    DispatcherUse worker = Dispatcher::start();
};

TEST_F(DelayedTask, RunsOnItsDispatcherAfterItsTime) {
    const Clock::time_point begin = Clock::now();
    Dispatcher* current = nullptr;
    Clock::time_point ran;
    const TaskHandle task = worker->postDelayed(40, [&] {
        current = Dispatcher::current();
        ran = Clock::now();
    });
    EXPECT_FALSE(task.isDone());
    task.waitUntilDone();
    EXPECT_EQ(current, worker.get());
    EXPECT_GE(ran - begin, std::chrono::milliseconds(40));
}

TEST_F(DelayedTask, OfZeroOrBelowIsAnOrdinaryTask) {
    std::vector<int> runs;
    const TaskHandle first = worker->post([&runs] { runs.push_back(1); });
    const TaskHandle second = worker->postDelayed(0, [&runs] { runs.push_back(2); });
    const TaskHandle third = worker->postDelayed(-7, [&runs] { runs.push_back(3); });
    const TaskHandle fourth = worker->post([&runs] { runs.push_back(4); });
    fourth.waitUntilDone();
    EXPECT_EQ(runs, (std::vector<int>{1, 2, 3, 4}));
    EXPECT_EQ(worker->delayCounts().workers, 0U);
}

TEST_F(DelayedTask, ReturnsItsWorkerAtOnceWhenItsHandleGoes) {
    bool ran = false;
    {
        const TaskHandle handle = worker->postDelayed(hourMs, [&ran] { ran = true; });
        EXPECT_EQ(worker->delayCounts().waiting, 1U);
        EXPECT_EQ(worker->delayCounts().workers, 1U);
    }
    EXPECT_TRUE(waiting(0));
    EXPECT_EQ(worker->delayCounts().workers, 1U);
    worker->runSynchronously([] {});
    EXPECT_FALSE(ran);
}

TEST_F(DelayedTask, ReturnsItsWorkerAtOnceWhenItIsCancelled) {
    bool ran = false;
    TaskHandle handle = worker->postDelayed(hourMs, [&ran] { ran = true; });
    handle.cancel();
    EXPECT_TRUE(waiting(0));
    EXPECT_FALSE(ran);
    EXPECT_FALSE(handle.isDone()) << "nobody was given it to skip";
}

TEST_F(DelayedTask, ReturnsItsWorkerAtOnceWhenASharedCounterCancelsIt) {
    const auto cancel = Ref<WaitableCounter>::adopt(new WaitableCounter);
    std::vector<TaskHandle> handles;
    for (int i = 0; i < 5; ++i) {
        handles.push_back(worker->postDelayed(
            hourMs, [] {}, cancel));
    }
    EXPECT_EQ(worker->delayCounts().waiting, 5U);
    cancel->set(1);
    EXPECT_TRUE(waiting(0));
}

TEST_F(DelayedTask, IsKeptByACopyOfItsHandle) {
    std::atomic<bool> ran{false};
    TaskHandle kept;
    {
        const TaskHandle first = worker->postDelayed(20, [&ran] { ran = true; });
        kept = first;
    }
    kept.waitUntilDone();
    EXPECT_TRUE(ran);
}

TEST_F(DelayedTask, IsSkippedWhenItIsCancelledInTheQueue) {
    OneTimeGate begun;
    OneTimeGate mayEnd;
    bool ran = false;
    worker->postAndForget([&] {
        begun.open();
        EXPECT_TRUE(mayEnd.pass());
    });
    EXPECT_TRUE(begun.pass());
    TaskHandle handle = worker->postDelayed(1, [&ran] { ran = true; });
    EXPECT_TRUE(waiting(0));
    handle.cancel();
    mayEnd.open();
    handle.waitUntilDone();
    EXPECT_FALSE(ran);
}

TEST_F(DelayedTask, KeepsItsPlaceAtTheFront) {
    OneTimeGate begun;
    OneTimeGate mayEnd;
    std::vector<int> runs;
    worker->postAndForget([&] {
        begun.open();
        EXPECT_TRUE(mayEnd.pass());
    });
    EXPECT_TRUE(begun.pass());
    worker->postAndForget([&runs] { runs.push_back(2); });
    const TaskHandle front = worker->postDelayed(
        1, [&runs] { runs.push_back(1); }, {}, Place::front);
    EXPECT_TRUE(waiting(0));
    const TaskHandle back = worker->postDelayed(1, [&runs] { runs.push_back(3); });
    EXPECT_TRUE(waiting(0));
    mayEnd.open();
    back.waitUntilDone();
    EXPECT_EQ(runs, (std::vector<int>{1, 2, 3}));
}

TEST_F(DelayedTask, DoesNotWaitForALongerOne) {
    bool longRan = false;
    const TaskHandle longer = worker->postDelayed(hourMs, [&longRan] { longRan = true; });
    const TaskHandle shorter = worker->postDelayed(5, [] {});
    shorter.waitUntilDone();
    EXPECT_FALSE(longRan);
    EXPECT_TRUE(waiting(1));
}

TEST_F(DelayedTask, UsesTheWorkersOfOthersBeforeIt) {
    for (int i = 0; i < 30; ++i) {
        worker->postDelayed(1, [] {}).waitUntilDone();
        EXPECT_TRUE(waiting(0));
    }
    EXPECT_EQ(worker->delayCounts().workers, 1U);
}

TEST_F(DelayedTask, HasAWorkerOfItsOwnHoweverManyWait) {
    std::deque<TaskHandle> handles;
    for (int i = 0; i < 40; ++i) {
        handles.push_back(worker->postDelayed(hourMs, [] {}));
    }
    EXPECT_EQ(worker->delayCounts().waiting, 40U);
    EXPECT_EQ(worker->delayCounts().workers, 40U);
    handles.clear();
    EXPECT_TRUE(waiting(0));

    std::atomic<int> runs{0};
    for (int i = 0; i < 40; ++i) {
        handles.push_back(worker->postDelayed(1, [&runs] { ++runs; }));
    }
    EXPECT_TRUE(waitUntil([&runs] { return runs == 40; }));
    EXPECT_EQ(worker->delayCounts().workers, 40U);
}

TEST_F(DelayedTask, MayBePostedByItsOwnThread) {
    std::atomic<bool> ran{false};
    TaskHandle handle;
    worker->runSynchronously([&] { handle = worker->postDelayed(5, [&ran] { ran = true; }); });
    handle.waitUntilDone();
    EXPECT_TRUE(ran);
}

TEST_F(DelayedTask, MayRaise) {
    const TaskHandle raising = worker->postDelayed(1, [] { throw std::runtime_error("raised"); });
    raising.waitUntilDone();
    EXPECT_TRUE(worker->runSynchronously([] {}));
}

TEST_F(DelayedTask, WakesTheHostWhenItsTimeHasCome) {
    std::atomic<int> wakes{0};
    const DispatcherUse hosted = Dispatcher::hostOnThisThread([&](Dispatcher&) { ++wakes; });
    bool ran = false;
    const TaskHandle task = hosted->postDelayed(10, [&ran] { ran = true; });
    EXPECT_FALSE(hosted->runOne());
    EXPECT_TRUE(waitUntil([&] { return wakes == 1; }));
    EXPECT_TRUE(hosted->runOne());
    EXPECT_TRUE(ran);
}

TEST_F(DelayedTask, IsGivenUpWhenItsDispatcherIsAskedToStop) {
    bool ran = false;
    const TaskHandle task = worker->postDelayed(hourMs, [&ran] { ran = true; });
    worker->requestStop();
    EXPECT_TRUE(waiting(0));
    EXPECT_TRUE(worker->join(waitForever));
    EXPECT_FALSE(ran);
    EXPECT_FALSE(task.isDone());
}

TEST_F(DelayedTask, OfAStoppedDispatcherNeverWaitsNorRuns) {
    worker->requestStop();
    EXPECT_TRUE(worker->join(waitForever));
    bool ran = false;
    const TaskHandle task = worker->postDelayed(hourMs, [&ran] { ran = true; });
    EXPECT_TRUE(waiting(0));
    EXPECT_FALSE(ran);
}

TEST_F(DelayedTask, EndsWithItsDispatcherAndLeavesNoThread) {
    bool ran = false;
    const auto held = std::make_shared<int>();
    std::deque<TaskHandle> tasks;
    for (int i = 0; i < 20; ++i) {
        tasks.push_back(worker->postDelayed(hourMs, [&ran, held] { ran = true; }));
    }
    worker = {};
    EXPECT_TRUE(waitUntil([this] { return liveThreadCount().get() == liveBefore; }));
    tasks.clear();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_FALSE(ran);
}

TEST_F(DelayedTask, MeetsTheEndOfItsDispatcherUnharmed) {
    for (int round = 0; round < 100; ++round) {
        DispatcherUse target = Dispatcher::start();
        std::deque<TaskHandle> tasks;
        std::atomic<int> runs{0};
        for (int i = 0; i < 5; ++i) {
            tasks.push_back(target->postDelayed(1 + i % 2, [&runs] { ++runs; }));
        }
        if (round % 2 == 0) {
            tasks.front().waitUntilDone();
        }
        target = {};
        int done = 0;
        for (const TaskHandle& task : tasks) {
            done += task.isDone() ? 1 : 0;
        }
        EXPECT_EQ(runs, done);
    }
    EXPECT_TRUE(waitUntil([this] { return liveThreadCount().get() == liveBefore + 1; }));
}

TEST_F(DelayedTask, GoesOnWhenOneOfSeveralUsesGoes) {
    DispatcherUse second(worker.ref());
    std::atomic<bool> ran{false};
    const TaskHandle task = worker->postDelayed(60, [&ran] { ran = true; });
    second = {};
    task.waitUntilDone();
    EXPECT_TRUE(ran);
}

TEST_F(DelayedTask, KeepsNoReferenceToItsDispatcher) {
    const TaskHandle task = worker->postDelayed(hourMs, [] {});
    const WeakRef<Dispatcher> weak(*worker);
    worker = {};
    EXPECT_FALSE(static_cast<bool>(weak.lock()));
}

TEST(DelayedTasks, AreTenThousandOfWhichHalfAreCancelledAndTheOtherHalfRun) {
    constexpr std::size_t count = 10'000;
    constexpr std::size_t waitingAtOnce = 200;
    const std::uint32_t liveBefore = liveThreadCount().get();
    const std::size_t threadsBefore = test::threadCountAtRest();
    {
        const DispatcherUse worker = Dispatcher::start();
        std::vector<int> runs(count);
        std::vector<TaskHandle> kept;
        for (std::size_t i = 0; i < count; ++i) {
            const bool isToRun = i % 2 == 0;
            TaskHandle handle = worker->postDelayed(isToRun ? 1 + static_cast<std::int64_t>(i % 3) : hourMs,
                                                    [&runs, i] { ++runs[i]; });
            if (isToRun) {
                kept.push_back(std::move(handle));
            }
            ASSERT_TRUE(waitUntil([&] { return worker->delayCounts().waiting < waitingAtOnce; }));
        }
        for (const TaskHandle& task : kept) {
            task.waitUntilDone();
        }
        EXPECT_TRUE(waitUntil([&] { return worker->delayCounts().waiting == 0; }));
        EXPECT_LE(worker->delayCounts().workers, waitingAtOnce);
        worker->runSynchronously([&runs] {
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(runs[i], i % 2 == 0 ? 1 : 0) << i;
            }
        });
    }
    EXPECT_TRUE(waitUntil([liveBefore] { return liveThreadCount().get() == liveBefore; }));
    EXPECT_TRUE(waitUntil([threadsBefore] { return test::threadCount() <= threadsBefore; }));
}

}  // namespace
}  // namespace korva::framework
