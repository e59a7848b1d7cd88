#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "framework/dispatcher.h"
#include "tests/support/busy_dispatcher.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::OneTimeGate;
using test::waitUntil;

/// A dispatcher whose thread begins when the test wants it to.
class LateDispatcher final : public ObjectClass<LateDispatcher, Dispatcher> {
public:
    LateDispatcher() : ObjectClass(RootType{}, false, nullptr) {}
    using Dispatcher::startThread;
};

std::optional<std::errc> errorOfJoin(Dispatcher& dispatcher) {
    try {
        dispatcher.join(waitForever);
    } catch (const std::system_error& error) {
        return static_cast<std::errc>(error.code().default_error_condition().value());
    }
    return std::nullopt;
}

TEST(DispatcherStop, BeforeTheThreadHasBegunIsNotForgotten) {
    const auto late = create<LateDispatcher>();
    const DispatcherUse use{Ref<Dispatcher>(late)};
    late->requestStop();
    EXPECT_EQ(late->currentState(), Dispatcher::stopping);

    late->startThread();

    EXPECT_TRUE(late->join(waitForever));
    EXPECT_EQ(late->currentState(), Dispatcher::stopping);
}

TEST(DispatcherStop, BeforeTheThreadHasBegunLetsCallsRunAndDropsTasks) {
    const auto late = create<LateDispatcher>();
    const DispatcherUse use{Ref<Dispatcher>(late)};
    late->requestStop();
    std::atomic<bool> taskRan{false};
    late->postAndForget([&taskRan] { taskRan = true; });
    const auto held = std::make_shared<int>();
    late->postAndForget([held] {});
    EXPECT_EQ(held.use_count(), 1);

    late->startThread();
    std::atomic<bool> callRan{false};
    const bool accepted = late->runSynchronously([&callRan] { callRan = true; });
    late->join(waitForever);

    EXPECT_EQ(callRan, accepted);
    EXPECT_FALSE(taskRan);
}

TEST(DispatcherStop, CallersAndPostersWaitForTheThreadToBegin) {
    const auto late = create<LateDispatcher>();
    const DispatcherUse use{Ref<Dispatcher>(late)};
    std::atomic<int> runs{0};
    std::thread caller([&] { EXPECT_TRUE(late->runSynchronously([&runs] { ++runs; })); });
    std::thread poster([&] { late->post([&runs] { ++runs; }).waitUntilDone(); });
    late->startThread();
    caller.join();
    poster.join();
    EXPECT_EQ(runs, 2);
}

TEST(DispatcherStop, OnlySetsTheStateSoThatAcceptedTasksAllRun) {
    test::BusyDispatcher busy;
    std::vector<int> runs;
    std::vector<TaskHandle> tasks;
    for (int i = 0; i < 100; ++i) {
        tasks.push_back(busy.worker->post([&runs, i] { runs.push_back(i); }));
    }
    tasks[50].cancel();

    busy.worker->requestStop();
    busy.worker->requestStop();
    EXPECT_TRUE(runs.empty());
    busy.end();
    EXPECT_TRUE(busy.worker->join(waitForever));

    EXPECT_EQ(runs.size(), 99U);
    for (const TaskHandle& task : tasks) {
        EXPECT_TRUE(task.isDone());
    }
}

TEST(DispatcherStop, DropsTasksPostedAfterIt) {
    test::BusyDispatcher busy;
    bool ran = false;
    const auto held = std::make_shared<int>();
    busy.worker->requestStop();

    const TaskHandle refused = busy.worker->post([&ran, held] { ran = true; });
    busy.worker->postAndForget([&ran] { ran = true; }, {}, DispatchTask::Place::front);
    busy.end();
    EXPECT_TRUE(busy.worker->join(waitForever));

    EXPECT_FALSE(ran);
    EXPECT_TRUE(static_cast<bool>(refused));
    EXPECT_FALSE(refused.isDone());
    EXPECT_EQ(held.use_count(), 2) << "the handle stays valid";
}

TEST(DispatcherStop, LetsCallsInUntilTheQueuesAreClosedButNoTasks) {
    std::atomic<int> wakes{0};
    const DispatcherUse hosted = Dispatcher::hostOnThisThread([&](Dispatcher&) { ++wakes; });
    bool taskBeforeRan = false;
    bool taskAfterRan = false;
    bool callRan = false;
    bool accepted = false;
    hosted->postAndForget([&] { taskBeforeRan = true; });
    hosted->requestStop();
    hosted->postAndForget([&] { taskAfterRan = true; });
    const int wakesBefore = wakes;
    std::thread caller([&] { accepted = hosted->runSynchronously([&] { callRan = true; }); });
    EXPECT_TRUE(waitUntil([&] { return wakes > wakesBefore; }));

    EXPECT_FALSE(hosted->runOne());
    caller.join();

    EXPECT_TRUE(accepted);
    EXPECT_TRUE(callRan);
    EXPECT_TRUE(taskBeforeRan);
    EXPECT_FALSE(taskAfterRan);
    EXPECT_FALSE(hosted->runOne());
}

TEST(DispatcherStop, RefusesCallsAtOnceAfterTheEnd) {
    DispatcherUse worker = Dispatcher::start();
    const Ref<Dispatcher> kept = worker.ref();
    worker = {};
    bool ran = false;
    EXPECT_FALSE(kept->runSynchronously([&ran] { ran = true; }));
    const TaskHandle refused = kept->post([&ran] { ran = true; });
    EXPECT_FALSE(refused.isDone());
    EXPECT_FALSE(ran);
}

TEST(DispatcherStop, RunsACallExactlyIfItSaysSoHoweverTheyMeet) {
    for (int round = 0; round < 100; ++round) {
        DispatcherUse worker = Dispatcher::start();
        const Ref<Dispatcher> kept = worker.ref();
        std::atomic<int> ran{0};
        std::atomic<int> accepted{0};
        OneTimeGate begun;
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                while (kept->runSynchronously([&ran] { ++ran; })) {
                    ++accepted;
                    begun.open();
                }
            });
        }
        EXPECT_TRUE(begun.pass());
        worker = {};
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(ran, accepted);
    }
}

TEST(DispatcherStop, GoesOnDrainingAfterTasksThatRaise) {
    test::BusyDispatcher busy;
    bool ran = false;
    const TaskHandle first = busy.worker->post([] { throw std::runtime_error("raised"); });
    const TaskHandle second = busy.worker->post([] { throw std::runtime_error("raised"); });
    const TaskHandle third = busy.worker->post([&ran] { ran = true; });
    busy.worker->requestStop();
    busy.end();
    EXPECT_TRUE(busy.worker->join(waitForever));
    EXPECT_TRUE(first.isDone());
    EXPECT_TRUE(second.isDone());
    EXPECT_TRUE(ran);
}

TEST(DispatcherStop, TellsTheHostWhatATaskRaisesAndDrainsOn) {
    const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
    bool ran = false;
    hosted->postAndForget([] { throw std::runtime_error("raised"); });
    hosted->postAndForget([&ran] { ran = true; });
    hosted->requestStop();
    EXPECT_THROW(hosted->runOne(), std::runtime_error);
    EXPECT_FALSE(hosted->runOne());
    EXPECT_TRUE(ran);
}

TEST(DispatcherStop, MayBeAskedForByATaskOfItsOwn) {
    const DispatcherUse worker = Dispatcher::start();
    bool nextRan = false;
    bool lateRan = false;
    worker->postAndForget([&] {
        worker->postAndForget([&nextRan] { nextRan = true; });
        worker->requestStop();
        worker->postAndForget([&lateRan] { lateRan = true; });
    });
    EXPECT_TRUE(worker->join(waitForever));
    EXPECT_TRUE(nextRan);
    EXPECT_FALSE(lateRan);
}

TEST(DispatcherJoin, IsFalseWhenTheLimitPasses) {
    for (const std::int64_t limitMs : {std::int64_t{30}, std::int64_t{0}, std::int64_t{-1}}) {
        test::BusyDispatcher busy;
        busy.worker->requestStop();
        EXPECT_FALSE(busy.worker->join(limitMs));
        busy.end();
        EXPECT_TRUE(busy.worker->join(20'000));
        EXPECT_TRUE(busy.worker->join(0)) << "it stays joined";
    }
}

TEST(DispatcherJoin, AsksForNothingItself) {
    const DispatcherUse worker = Dispatcher::start();
    EXPECT_FALSE(worker->join(20));
    EXPECT_EQ(worker->currentState(), Dispatcher::running);
    EXPECT_TRUE(worker->runSynchronously([] {}));
}

TEST(DispatcherJoin, MayBeDoneByManyThreadsAtOnce) {
    test::BusyDispatcher busy;
    std::atomic<int> joined{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] { joined += busy.worker->join(waitForever) ? 1 : 0; });
    }
    busy.worker->requestStop();
    busy.end();
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(joined, 4);
}

TEST(DispatcherJoin, OfAHostedOneIsNotForOtherThreads) {
    const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
    bool joined = true;
    std::thread other([&] { joined = hosted->join(waitForever); });
    other.join();
    EXPECT_FALSE(joined);
    EXPECT_EQ(hosted->currentState(), Dispatcher::running);
}

TEST(DispatcherJoin, OfOneselfStopsAndRunsWhatIsLeft) {
    const DispatcherUse worker = Dispatcher::start();
    std::vector<int> runs;
    worker->postAndForget([&] {
        worker->postAndForget([&runs] { runs.push_back(1); });
        worker->postAndForget([&runs] { runs.push_back(2); });
        EXPECT_TRUE(worker->join(waitForever));
        runs.push_back(3);
        EXPECT_TRUE(worker->join(0));
        EXPECT_EQ(worker->currentState(), Dispatcher::stopping);
    });
    EXPECT_TRUE(worker->join(waitForever));
    EXPECT_EQ(runs, (std::vector<int>{1, 2, 3}));
}

TEST(DispatcherJoin, OfOneselfInsideACallLeavesTheCallIntact) {
    const DispatcherUse worker = Dispatcher::start();
    bool joined = false;
    EXPECT_TRUE(worker->runSynchronously([&] { joined = worker->join(waitForever); }));
    EXPECT_TRUE(joined);
    EXPECT_FALSE(worker->runSynchronously([] {}));
}

TEST(DispatcherJoin, OfOneselfOnAHostDrains) {
    const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
    int runs = 0;
    hosted->postAndForget([&runs] { ++runs; });
    hosted->postAndForget([] { throw std::runtime_error("raised"); });
    hosted->postAndForget([&runs] { ++runs; });
    EXPECT_TRUE(hosted->join(waitForever));
    EXPECT_EQ(runs, 2);
    EXPECT_FALSE(hosted->runOne());
}

TEST(DispatcherJoin, ServesTheCallsOfItsOwnThreadMeanwhile) {
    const DispatcherUse joiner = Dispatcher::start();
    test::BusyDispatcher busy;
    std::atomic<int> served{0};
    for (int i = 0; i < 50; ++i) {
        busy.worker->postAndForget([&] { joiner->runSynchronously([&served] { ++served; }); });
    }
    busy.worker->requestStop();
    bool joined = false;
    const TaskHandle joining = joiner->post([&] {
        busy.end();
        joined = busy.worker->join(waitForever);
    });
    joining.waitUntilDone();
    EXPECT_TRUE(joined);
    EXPECT_EQ(served, 50);
}

TEST(DispatcherJoin, RunsNoTaskOfItsOwnThreadMeanwhile) {
    const DispatcherUse joiner = Dispatcher::start();
    test::BusyDispatcher busy;
    std::atomic<bool> taskRan{false};
    bool ranMeanwhile = true;
    joiner
        ->post([&] {
            joiner->postAndForget([&taskRan] { taskRan = true; });
            EXPECT_FALSE(busy.worker->join(20));
            ranMeanwhile = taskRan;
        })
        .waitUntilDone();
    EXPECT_FALSE(ranMeanwhile);
    joiner->post([] {}).waitUntilDone();
    EXPECT_TRUE(taskRan);
}

TEST(DispatcherJoin, OfWhoWaitsForTheCallThatJoinsWouldBeADeadlock) {
    const DispatcherUse owner = Dispatcher::start();
    const DispatcherUse watcher = Dispatcher::start();
    std::optional<std::errc> error;
    watcher
        ->post([&] {
            owner->runSynchronously([&] {
                EXPECT_FALSE(watcher->join(10)) << "with a limit it just passes";
                error = errorOfJoin(*watcher);
            });
        })
        .waitUntilDone();
    EXPECT_EQ(error, std::errc::resource_deadlock_would_occur);
    EXPECT_TRUE(watcher->runSynchronously([] {})) << "nothing has happened to it";
}

TEST(DispatcherJoin, OfAnOuterCallsWaiterWouldBeADeadlockToo) {
    const DispatcherUse owner = Dispatcher::start();
    const DispatcherUse watcher = Dispatcher::start();
    const DispatcherUse third = Dispatcher::start();
    std::optional<std::errc> error;
    watcher
        ->post([&] {
            owner->runSynchronously([&] {
                third->runSynchronously(
                    [&] { owner->runSynchronously([&] { error = errorOfJoin(*watcher); }); });
            });
        })
        .waitUntilDone();
    EXPECT_EQ(error, std::errc::resource_deadlock_would_occur);
}

TEST(DispatcherUses, KeepTheThreadRunningUntilTheLastOneGoes) {
    DispatcherUse first = Dispatcher::start();
    DispatcherUse second(first.ref());
    DispatcherUse third(first.ref());
    const Ref<Dispatcher> kept = first.ref();

    first = {};
    EXPECT_TRUE(kept->runSynchronously([] {}));
    second = DispatcherUse();
    EXPECT_TRUE(kept->runSynchronously([] {}));
    DispatcherUse moved = std::move(third);
    EXPECT_TRUE(kept->runSynchronously([] {}));
    moved = {};
    EXPECT_EQ(kept->currentState(), Dispatcher::stopping);
    EXPECT_FALSE(kept->runSynchronously([] {}));
}

TEST(DispatcherUses, MayGoOnTheThreadItselfWhileOthersAreLeft) {
    const DispatcherUse worker = Dispatcher::start();
    worker->runSynchronously([&] { const DispatcherUse second(worker.ref()); });
    EXPECT_EQ(worker->currentState(), Dispatcher::running);
    EXPECT_TRUE(worker->runSynchronously([] {}));
}

TEST(DispatcherUses, RunWhatIsLeftWhenTheLastOneGoesOnTheThreadItself) {
    const std::uint32_t liveBefore = liveThreadCount().get();
    OneTimeGate begun;
    OneTimeGate mayEnd;
    std::atomic<bool> nextRan{false};
    {
        auto use = std::make_unique<DispatcherUse>(Dispatcher::start());
        Dispatcher& worker = **use;
        const Ref<Dispatcher> kept = use->ref();
        worker.postAndForget([&begun, &mayEnd, own = std::move(use)]() mutable {
            begun.open();
            EXPECT_TRUE(mayEnd.pass());
            own = nullptr;
        });
        EXPECT_TRUE(begun.pass());
        kept->postAndForget([&nextRan] { nextRan = true; });
        mayEnd.open();
    }
    EXPECT_TRUE(waitUntil([liveBefore] { return liveThreadCount().get() == liveBefore; }));
    EXPECT_TRUE(nextRan);
}

TEST(DispatcherUses, OfNoneDoNothing) {
    DispatcherUse none;
    EXPECT_FALSE(static_cast<bool>(none));
    none = DispatcherUse();
    EXPECT_EQ(none.get(), nullptr);
}

TEST(LiveThreadCount, IsRaisedByTheStartAndBackAfterTheEnd) {
    const std::uint32_t before = liveThreadCount().get();
    {
        const DispatcherUse first = Dispatcher::start();
        EXPECT_EQ(liveThreadCount().get(), before + 1);
        const DispatcherUse second = Dispatcher::start();
        EXPECT_EQ(liveThreadCount().get(), before + 2);
        const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
        EXPECT_EQ(liveThreadCount().get(), before + 2);
    }
    EXPECT_EQ(liveThreadCount().get(), before);
}

TEST(LiveThreadCount, OfASystemThatEndedThemIsBackToo) {
    const std::size_t before = test::threadCountAtRest();
    {
        std::vector<DispatcherUse> workers;
        for (int i = 0; i < 20; ++i) {
            workers.push_back(Dispatcher::start());
        }
        EXPECT_GE(test::threadCount(), before + 20);
    }
    EXPECT_TRUE(waitUntil([before] { return test::threadCount() <= before; }));
}

TEST(HostedDispatcherStop, RunsWhatIsLeftWhenItsLastUseGoes) {
    std::vector<int> runs;
    {
        const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
        hosted->postAndForget([&runs] { runs.push_back(1); });
        hosted->postAndForget([&runs] { runs.push_back(2); });
        std::thread stopper([&hosted] { hosted->requestStop(); });
        stopper.join();
        EXPECT_TRUE(runs.empty());
    }
    EXPECT_EQ(runs, (std::vector<int>{1, 2}));
}

TEST(HostedDispatcherStop, MakesRoomForANewOneOnItsThread) {
    const DispatcherUse first = Dispatcher::hostOnThisThread(nullptr);
    first->requestStop();
    EXPECT_FALSE(first->runOne());
    {
        const DispatcherUse second = Dispatcher::hostOnThisThread(nullptr);
        EXPECT_EQ(Dispatcher::current(), second.get());
        EXPECT_TRUE(second->runSynchronously([] {}));
    }
    EXPECT_EQ(Dispatcher::current(), nullptr);
}

}  // namespace
}  // namespace korva::framework
