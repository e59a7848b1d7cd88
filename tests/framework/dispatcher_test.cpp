#include "framework/dispatcher.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "framework/dispatcher_registry.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/processor_time.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using Place = DispatchTask::Place;
using test::OneTimeGate;
using test::waitUntil;

/// Keeps a dispatcher's thread busy until it is let go.
class Occupation {
public:
    explicit Occupation(Dispatcher& dispatcher) {
        dispatcher.postAndForget([begun = begun, mayEnd = mayEnd] {
            begun->open();
            EXPECT_TRUE(mayEnd->pass());
        });
        EXPECT_TRUE(begun->pass());
    }
    ~Occupation() { end(); }

    void end() { mayEnd->open(); }

private:
    const std::shared_ptr<OneTimeGate> begun = std::make_shared<OneTimeGate>();
    const std::shared_ptr<OneTimeGate> mayEnd = std::make_shared<OneTimeGate>();
};

bool isRegistered(const Dispatcher& dispatcher) {
    for (const Ref<Dispatcher>& known : dispatcherRegistry().all()) {
        if (known.get() == &dispatcher) {
            return true;
        }
    }
    return false;
}

TEST(Dispatcher, RunsTasksOnItsOwnThread) {
    const DispatcherUse worker = Dispatcher::start();
    Dispatcher* current = nullptr;
    bool isOwn = false;
    const TaskHandle task = worker->post([&] {
        current = Dispatcher::current();
        isOwn = worker->isOwnThread();
    });
    task.waitUntilDone();
    EXPECT_EQ(current, worker.get());
    EXPECT_TRUE(isOwn);
    EXPECT_FALSE(worker->isOwnThread());
    EXPECT_FALSE(worker->isHosted());
    EXPECT_EQ(Dispatcher::current(), nullptr);
}

TEST(Dispatcher, TellsWhatItsThreadWasStartedFor) {
    struct alignas(32) Root {
        char bytes[96];
    };
    const DispatcherUse worker = Dispatcher::start(RootType::of<Root>());
    EXPECT_EQ(worker->rootType().identity, typeTag<Root>());
    EXPECT_EQ(worker->rootType().size, 96U);
    EXPECT_EQ(worker->rootType().alignment, 32U);
    EXPECT_EQ(Dispatcher::start()->rootType().identity, nullptr);
}

TEST(Dispatcher, RunsFromItsStartUntilItIsAskedToStop) {
    const DispatcherUse worker = Dispatcher::start();
    worker->runSynchronously([] {});
    EXPECT_EQ(worker->currentState(), Dispatcher::running);
    EXPECT_EQ(worker->stopRequest()->get(), 0U);

    worker->requestStop();

    EXPECT_EQ(worker->currentState(), Dispatcher::stopping);
    EXPECT_EQ(worker->stopRequest()->get(), 1U);
}

TEST(Dispatcher, RunsTasksInTheOrderOfTheirPosts) {
    const DispatcherUse worker = Dispatcher::start();
    std::vector<int> runs;
    for (int i = 0; i < 1000; ++i) {
        worker->postAndForget([&runs, i] { runs.push_back(i); });
    }
    worker->post([] {}).waitUntilDone();
    worker->post([] {}).waitUntilDone();
    ASSERT_EQ(runs.size(), 1000U);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(runs[static_cast<std::size_t>(i)], i);
    }
}

TEST(Dispatcher, RunsATaskWithFrontBeforeOlderTasks) {
    const DispatcherUse worker = Dispatcher::start();
    std::vector<int> runs;
    Occupation occupation(*worker);
    worker->postAndForget([&runs] { runs.push_back(3); });
    worker->postAndForget([&runs] { runs.push_back(2); }, {}, Place::front);
    worker->postAndForget([&runs] { runs.push_back(1); }, {}, Place::front);
    occupation.end();
    worker->post([] {}).waitUntilDone();
    EXPECT_EQ(runs, (std::vector<int>{1, 2, 3}));
}

TEST(Dispatcher, RunsTasksPostedByItsOwnTasksAfterThem) {
    const DispatcherUse worker = Dispatcher::start();
    std::vector<int> runs;
    OneTimeGate done;
    worker->postAndForget([&] {
        worker->postAndForget([&] {
            runs.push_back(2);
            done.open();
        });
        runs.push_back(1);
    });
    EXPECT_TRUE(done.pass());
    EXPECT_EQ(runs, (std::vector<int>{1, 2}));
}

TEST(Dispatcher, SkipsATaskWhoseHandleWasDiscardedAndIsDoneWithIt) {
    const DispatcherUse worker = Dispatcher::start();
    bool ran = false;
    const auto held = std::make_shared<int>();
    Occupation occupation(*worker);
    static_cast<void>(worker->post([&ran, held] { ran = true; }));
    occupation.end();
    worker->post([] {}).waitUntilDone();
    EXPECT_FALSE(ran);
    EXPECT_TRUE(waitUntil([&held] { return held.use_count() == 1; }));
}

TEST(Dispatcher, RunsATaskAsLongAsACopyOfItsHandleIsKept) {
    const DispatcherUse worker = Dispatcher::start();
    bool ran = false;
    Occupation occupation(*worker);
    TaskHandle kept;
    {
        const TaskHandle first = worker->post([&ran] { ran = true; });
        kept = first;
    }
    occupation.end();
    kept.waitUntilDone();
    EXPECT_TRUE(ran);
}

TEST(Dispatcher, IsDoneWithATaskThatWasCancelled) {
    const DispatcherUse worker = Dispatcher::start();
    bool ran = false;
    Occupation occupation(*worker);
    TaskHandle handle = worker->post([&ran] { ran = true; });
    handle.cancel();
    EXPECT_FALSE(handle.isDone());
    occupation.end();
    handle.waitUntilDone();
    EXPECT_TRUE(handle.isDone());
    EXPECT_FALSE(ran);
}

TEST(Dispatcher, CancelsAllTasksThatShareACounter) {
    const DispatcherUse worker = Dispatcher::start();
    const auto cancel = Ref<WaitableCounter>::adopt(new WaitableCounter);
    std::vector<int> runs;
    Occupation occupation(*worker);
    worker->postAndForget([&runs] { runs.push_back(1); }, cancel);
    worker->postAndForget([&runs] { runs.push_back(2); });
    const TaskHandle third = worker->post([&runs] { runs.push_back(3); }, cancel);
    cancel->set(1);
    occupation.end();
    worker->post([] {}).waitUntilDone();
    EXPECT_EQ(runs, std::vector<int>{2});
    EXPECT_TRUE(third.isDone());
}

TEST(Dispatcher, RunsTasksWithoutHandlesThatNobodyCanCancel) {
    const DispatcherUse worker = Dispatcher::start();
    std::atomic<int> runs{0};
    for (int i = 0; i < 100; ++i) {
        worker->postAndForget([&runs] { ++runs; });
    }
    EXPECT_TRUE(waitUntil([&runs] { return runs == 100; }));
}

TEST(Dispatcher, GoesOnAfterTasksThatRaise) {
    const DispatcherUse worker = Dispatcher::start();
    const TaskHandle raising = worker->post([] { throw std::runtime_error("raised"); });
    const TaskHandle empty = worker->post(std::function<void()>());
    const TaskHandle null = worker->post(static_cast<void (*)()>(nullptr));
    bool ran = false;
    const TaskHandle next = worker->post([&ran] { ran = true; });
    next.waitUntilDone();
    EXPECT_TRUE(raising.isDone());
    EXPECT_TRUE(empty.isDone());
    EXPECT_TRUE(null.isDone());
    EXPECT_TRUE(ran);
}

TEST(Dispatcher, TakesTasksOfManyThreadsEachInItsOrder) {
    constexpr int perThread = 10'000;
    const DispatcherUse worker = Dispatcher::start();
    std::vector<int> next(4);
    std::atomic<bool> isInOrder{true};
    std::vector<std::thread> threads;
    for (int& own : next) {
        threads.emplace_back([&worker, &isInOrder, &own] {
            for (int i = 0; i < perThread; ++i) {
                worker->postAndForget([&isInOrder, &own, i] { isInOrder = own++ == i && isInOrder; });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    worker->post([] {}).waitUntilDone();
    EXPECT_TRUE(isInOrder);
    EXPECT_EQ(next, std::vector<int>(4, perThread));
}

TEST(Dispatcher, UsesNoProcessorTimeWhileNothingIsToBeDone) {
    const DispatcherUse first = Dispatcher::start();
    const DispatcherUse second = Dispatcher::start();
    first->post([] {}).waitUntilDone();
    const std::int64_t before = test::processorTimeMs();
    WaitableCounter never;
    std::uint32_t seen = 0;

    EXPECT_FALSE(never.waitFor(seen, 500));

    EXPECT_LT(test::processorTimeMs() - before, 200);
}

TEST(Dispatcher, IsKnownFromItsStartUntilItWasJoined) {
    DispatcherUse worker = Dispatcher::start();
    EXPECT_TRUE(isRegistered(*worker));
    const Ref<Dispatcher> kept = worker.ref();
    worker = {};
    EXPECT_FALSE(isRegistered(*kept));
    {
        const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
        EXPECT_TRUE(isRegistered(*hosted));
    }
    EXPECT_TRUE(dispatcherRegistry().all().empty());
}

TEST(HostedDispatcher, IsThatOfItsThreadAndRunsFromTheBeginning) {
    const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
    EXPECT_EQ(Dispatcher::current(), hosted.get());
    EXPECT_TRUE(hosted->isOwnThread());
    EXPECT_TRUE(hosted->isHosted());
    EXPECT_EQ(hosted->currentState(), Dispatcher::running);
    EXPECT_EQ(hosted->rootType().identity, nullptr);
}

TEST(HostedDispatcher, LeavesItsThreadWithTheLastUse) {
    {
        const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
        const DispatcherUse second(hosted.ref());
    }
    EXPECT_EQ(Dispatcher::current(), nullptr);
}

TEST(HostedDispatcher, DoesNotWaitForWorkWhenThereIsNone) {
    const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
    EXPECT_FALSE(hosted->runOne());
    hosted->postAndForget([] {});
    EXPECT_TRUE(hosted->runOne());
    EXPECT_FALSE(hosted->runOne());
}

TEST(HostedDispatcher, WakesItsHostAfterEachPushAndEachStopRequestOfOthers) {
    std::atomic<int> wakes{0};
    std::atomic<Dispatcher*> woken{nullptr};
    const DispatcherUse hosted = Dispatcher::hostOnThisThread([&](Dispatcher& dispatcher) {
        woken = &dispatcher;
        ++wakes;
    });
    hosted->postAndForget([] {});
    EXPECT_EQ(wakes, 1);
    EXPECT_EQ(woken, hosted.get());

    std::thread other([&] { hosted->runSynchronously([] {}); });
    EXPECT_TRUE(waitUntil([&] { return wakes == 2; }));
    while (hosted->runOne()) {
    }
    other.join();

    std::thread stopper([&] { hosted->requestStop(); });
    stopper.join();
    EXPECT_EQ(wakes, 3);
}

TEST(HostedDispatcher, HasPushedBeforeItWakes) {
    int runs = 0;
    const DispatcherUse hosted = Dispatcher::hostOnThisThread([&](Dispatcher& dispatcher) {
        while (dispatcher.runOne()) {
        }
    });
    hosted->postAndForget([&runs] { ++runs; });
    EXPECT_EQ(runs, 1);
}

TEST(HostedDispatcher, RunsCallsBeforeTasks) {
    std::atomic<int> wakes{0};
    const DispatcherUse hosted = Dispatcher::hostOnThisThread([&](Dispatcher&) { ++wakes; });
    std::vector<int> runs;
    hosted->postAndForget([&runs] { runs.push_back(1); });
    hosted->postAndForget([&runs] { runs.push_back(2); }, {}, Place::front);
    std::thread caller([&] { hosted->runSynchronously([&runs] { runs.push_back(0); }); });
    EXPECT_TRUE(waitUntil([&] { return wakes == 3; }));

    while (hosted->runOne()) {
    }
    caller.join();

    EXPECT_EQ(runs, (std::vector<int>{0, 2, 1})) << "the call, the front, the older one";
}

TEST(HostedDispatcher, RaisesWhatATaskRaisesInItsHostWhoMayGoOn) {
    const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
    const TaskHandle raising = hosted->post([] { throw std::runtime_error("raised"); });
    const TaskHandle empty = hosted->post(std::function<void()>());
    const TaskHandle null = hosted->post(static_cast<void (*)()>(nullptr));
    bool ran = false;
    hosted->postAndForget([&ran] { ran = true; });

    EXPECT_THROW(hosted->runOne(), std::runtime_error);
    EXPECT_TRUE(raising.isDone());
    EXPECT_THROW(hosted->runOne(), std::bad_function_call);
    EXPECT_TRUE(empty.isDone());
    EXPECT_THROW(hosted->runOne(), std::bad_function_call);
    EXPECT_TRUE(null.isDone());
    EXPECT_TRUE(hosted->runOne());
    EXPECT_TRUE(ran);
    EXPECT_FALSE(hosted->runOne()) << "nothing counts as pending any more";
}

TEST(HostedDispatcher, ReachesWhatIsQueuedFromInsideATask) {
    const DispatcherUse hosted = Dispatcher::hostOnThisThread(nullptr);
    std::vector<int> runs;
    hosted->postAndForget([&] {
        hosted->postAndForget([&runs] { runs.push_back(1); });
        while (hosted->runOne()) {
        }
        runs.push_back(2);
    });
    EXPECT_TRUE(hosted->runOne());
    EXPECT_EQ(runs, (std::vector<int>{1, 2}));
    EXPECT_FALSE(hosted->runOne());
}

TEST(HostedDispatcher, ReachesWhatIsQueuedFromInsideACall) {
    std::atomic<int> wakes{0};
    const DispatcherUse hosted = Dispatcher::hostOnThisThread([&](Dispatcher&) { ++wakes; });
    int runs = 0;
    int rounds = 0;
    std::thread caller([&] {
        hosted->runSynchronously([&] {
            hosted->postAndForget([&runs] { ++runs; });
            // The call itself runs, and is not there to be run again.
            while (hosted->runOne() && rounds < 1000) {
                ++rounds;
            }
        });
    });
    EXPECT_TRUE(waitUntil([&] { return wakes == 1; }));
    EXPECT_TRUE(hosted->runOne());
    caller.join();
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(rounds, 1);
}

}  // namespace
}  // namespace korva::framework
