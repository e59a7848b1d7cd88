// Threads and objects that end while others are still about them.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "framework/active_object.h"
#include "framework/dispatcher.h"
#include "framework/framework_scope.h"
#include "tests/support/active_counter.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::ActiveCounter;
using test::LifeCounts;
using test::OneTimeGate;
using test::waitUntil;

TEST(EndingThread, MayBeEndedByTheLastReleaseOfTheObjectThatOwnsIt) {
    const std::uint32_t threadsBefore = liveThreadCount().get();
    for (int round = 0; round < 300; ++round) {
        LifeCounts counts;
        DispatcherUse worker = Dispatcher::start();
        Ref<ActiveCounter> object;
        worker->runSynchronously([&] { object = create<ActiveCounter>(counts); });
        object->ownDispatcher(std::move(worker));
        object = nullptr;
        ASSERT_TRUE(waitUntil([&] { return counts.ends == 1 && liveThreadCount().get() == threadsBefore; }));
    }
}

TEST(EndingThread, MakesNoWorkerForADelayedTaskThatComesTooLate) {
    const std::uint32_t threadsBefore = liveThreadCount().get();
    DispatcherUse worker = Dispatcher::start();
    const Ref<Dispatcher> kept = worker.ref();
    std::atomic<int> runs{0};
    worker->postAndForget([&] {
        // It runs while the queues are drained, and would begin the next delay.
        EXPECT_TRUE(waitUntil([&] { return kept->currentState() == Dispatcher::stopping; }));
        const TaskHandle handle = kept->postDelayed(1, [&runs] { ++runs; });
    });
    worker = {};
    const TaskHandle afterwards = kept->postDelayed(1, [&runs] { ++runs; });
    EXPECT_EQ(liveThreadCount().get(), threadsBefore);
    EXPECT_EQ(kept->delayCounts().workers, 0U);
    EXPECT_EQ(runs, 0);
}

TEST(EndingThread, EndsItsIdleDelayWorkersWhenItsOwnThreadDroppedTheLastUse) {
    const std::uint32_t threadsBefore = liveThreadCount().get();
    auto worker = std::make_unique<DispatcherUse>(Dispatcher::start());
    const Ref<Dispatcher> kept = worker->ref();
    kept->postDelayed(1, [] {}).waitUntilDone();
    kept->postAndForget([&] { worker.reset(); });
    EXPECT_TRUE(kept->join(waitForever));
    EXPECT_TRUE(waitUntil([&] { return liveThreadCount().get() == threadsBefore; }));
}

// The thread that joins serves its own calls until the other has really ended.
TEST(EndingThread, MayCallTheThreadThatJoinsItAfterItDroppedItsOwnLastUse) {
    const DispatcherUse joiner = Dispatcher::start();
    auto ending = std::make_unique<DispatcherUse>(Dispatcher::start());
    const Ref<Dispatcher> kept = ending->ref();
    OneTimeGate joins;
    bool wasServed = false;
    kept->postAndForget([&] {
        ending.reset();
        EXPECT_TRUE(joins.pass());
        wasServed = joiner->runSynchronously([] {});
    });
    bool isJoined = false;
    joiner->runSynchronously([&] {
        joins.open();
        isJoined = kept->join(waitForever);
    });
    EXPECT_TRUE(isJoined);
    EXPECT_TRUE(wasServed);
}

TEST(EndingThread, WakesTheLastScopeWithoutTouchingWhatThatFrees) {
    for (int round = 0; round < 500; ++round) {
        const FrameworkScope scope({.external = true});
        const DispatcherUse worker = Dispatcher::start();
        worker->runSynchronously([] {});
    }
}

/// An object with a text.
class Named final : public ObjectClass<Named, ActiveObject> {
public:
    Observable<std::string> name{*this};
};

// While a thread waits for its call it serves others, who may change the value that it has handed over.
TEST(ForeignSet, TakesTheValueAsItWasWhenItWasCalled) {
    const std::string first(100, '1');
    const std::string second(100, '2');
    const DispatcherUse here = Dispatcher::start();
    const DispatcherUse there = Dispatcher::start();
    Ref<Named> source;
    Ref<Named> target;
    here->runSynchronously([&] { source = create<Named>(); });
    there->runSynchronously([&] { target = create<Named>(); });
    for (int round = 0; round < 200; ++round) {
        source->name.set(first);
        target->name.set("");
        OneTimeGate isBusy;
        there->postAndForget([&] {
            isBusy.open();
            source->name.set(second);  // served by the thread that waits for this one
        });
        EXPECT_TRUE(isBusy.pass());
        std::string before;
        here->runSynchronously([&] {
            before = source->name.value();
            target->name.set(source->name.value());
        });
        ASSERT_EQ(target->name.read(), before);
    }
}

TEST(DispatcherUse, KeepsItsUseWhenItIsAssignedToItself) {
    DispatcherUse worker = Dispatcher::start();
    DispatcherUse& same = worker;
    worker = std::move(same);
    ASSERT_TRUE(static_cast<bool>(worker));
    EXPECT_TRUE(worker->runSynchronously([] {}));
}

TEST(ShareIfAlive, GivesNothingOfAnObjectThatTakesReferencesWhileItEnds) {
    LifeCounts counts;
    bool wasShared = true;
    {
        const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
        object->atClose = [&](ActiveCounter& ending) {
            const Ref<ActiveCounter> own = Ref<ActiveCounter>::share(&ending);
            wasShared = static_cast<bool>(ObjectBase::shareIfAlive(ending));
        };
    }
    EXPECT_EQ(counts.ends, 1);
    EXPECT_FALSE(wasShared);
}

}  // namespace
}  // namespace korva::framework
