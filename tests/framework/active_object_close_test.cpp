#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/active_object.h"
#include "framework/dispatcher.h"
#include "tests/support/active_counter.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::ActiveCounter;
using test::LifeCounts;
using test::OneTimeGate;
using test::referencesTo;
using test::waitUntil;

TEST(ActiveObjectClose, TakesEffectOnce) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);

    object->close();
    object->close();

    EXPECT_EQ(counts.closes, 1);
    EXPECT_FALSE(object->isAlive.value());
    EXPECT_EQ(object->closedCounter()->get(), 1U);
}

TEST(ActiveObjectClose, WithTwoHoldsTakesEffectAtTheThirdCall) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    EXPECT_EQ(object->holdClose(), 1);
    EXPECT_EQ(object->holdClose(), 2);

    object->close();
    EXPECT_EQ(counts.closes, 0);
    object->close();
    EXPECT_EQ(counts.closes, 0);
    EXPECT_TRUE(object->isAlive.value());
    object->close();
    EXPECT_EQ(counts.closes, 1);
    object->close();
    EXPECT_EQ(counts.closes, 1);
}

TEST(ActiveObjectClose, ASecondHolderThatLeavesLetsTheObjectLive) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    object->AddRef();
    object->holdClose();

    object->close();
    object->Release();

    EXPECT_TRUE(object->isAlive.value());
    EXPECT_EQ(object->closedCounter()->get(), 0U);
    EXPECT_EQ(referencesTo(*object), 1U);
}

TEST(ActiveObjectClose, AHoldTakenAfterACloseWasAnsweredCountsAnew) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    object->holdClose();
    object->close();

    EXPECT_EQ(object->holdClose(), 1);
    object->close();
    EXPECT_EQ(counts.closes, 0);
    object->close();

    EXPECT_EQ(counts.closes, 1);
}

TEST(ActiveObjectClose, TheLastReleaseClosesWhateverHoldsAreLeft) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    object->holdClose();
    object->holdClose();

    object = nullptr;

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.ends, 1);
    EXPECT_EQ(counts.endsUnclosed, 0);
}

TEST(ActiveObjectClose, TheLastReleaseOfAClosedObjectDoesNotCloseItAgain) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    object->close();

    object = nullptr;

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.ends, 1);
}

TEST(ActiveObjectClose, OnCloseMayDropTheLastOtherReference) {
    LifeCounts counts;
    Ref<ActiveCounter> self = create<ActiveCounter>(counts);
    ActiveCounter* const object = self.get();
    object->atClose = [&](ActiveCounter&) { self = nullptr; };

    object->close();

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.ends, 1);
}

TEST(ActiveObjectClose, OnCloseMayDropTheLastOtherReferenceWhenAStrangerAskedForIt) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    Ref<ActiveCounter> self;
    worker->runSynchronously([&] {
        self = create<ActiveCounter>(counts);
        self->atClose = [&](ActiveCounter&) { self = nullptr; };
    });

    self->close();

    EXPECT_TRUE(waitUntil([&] { return counts.ends == 1; }));
    EXPECT_EQ(counts.closes, 1);
}

TEST(ActiveObjectClose, OnCloseMayTakeAndDropAReferenceToADestroyedObject) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    object->atClose = [](ActiveCounter& self) {
        self.AddRef();
        self.Release();
        const auto again = Ref<ActiveCounter>::share(&self);
    };

    object = nullptr;

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.ends, 1);
}

TEST(ActiveObjectClose, ACloseFromOnCloseDoesNothing) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    object->atClose = [](ActiveCounter& self) { self.close(); };

    object->close();

    EXPECT_EQ(counts.closes, 1);
}

TEST(ActiveObjectClose, OnCloseFindsTheObjectStillAlive) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    bool wasAlive = false;
    std::uint32_t closed = 0;
    object->atClose = [&](ActiveCounter& self) {
        wasAlive = self.isAlive.value();
        closed = self.closedCounter()->get();
    };

    object->close();

    EXPECT_TRUE(wasAlive);
    EXPECT_EQ(closed, 1U);
}

// Follows what a value says as long as its owner is alive.
void noteEnd(void* context, ListenedTo&, ActiveObject&, const void* published, void*, const void*, Reason) {
    static_cast<std::vector<bool>*>(context)->push_back(*static_cast<const bool*>(published));
}

TEST(ActiveObjectClose, SubscribersOfIsAliveAreTold) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    std::vector<bool> seen;
    object->isAlive.subscribe(&seen, nullptr, &noteEnd, Position::last, false, true);

    object->close();

    EXPECT_EQ(seen, (std::vector<bool>{true, false}));
}

TEST(ActiveObjectClose, ByAStrangerRunsOnTheOwnerThread) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    Ref<ActiveCounter> object;
    std::uint32_t owner = 0;
    worker->runSynchronously([&] {
        object = create<ActiveCounter>(counts);
        owner = currentThreadNumber();
    });

    object->close();
    ASSERT_TRUE(waitUntil([&] { return counts.closes == 1; }));

    EXPECT_EQ(counts.closingThread, owner);
}

TEST(ActiveObjectClose, ByAStrangerDoesNotWait) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    Ref<ActiveCounter> object;
    worker->runSynchronously([&] { object = create<ActiveCounter>(counts); });
    OneTimeGate mayGoOn;
    worker->postAndForget([&] { EXPECT_TRUE(mayGoOn.pass()); });

    object->close();
    EXPECT_EQ(counts.closes, 0);
    mayGoOn.open();

    EXPECT_TRUE(waitUntil([&] { return counts.closes == 1; }));
}

TEST(ActiveObjectClose, ByAStrangerKeepsTheObjectUntilItHasRun) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    Ref<ActiveCounter> object;
    worker->runSynchronously([&] { object = create<ActiveCounter>(counts); });
    OneTimeGate mayGoOn;
    worker->postAndForget([&] { EXPECT_TRUE(mayGoOn.pass()); });

    object->close();
    EXPECT_EQ(referencesTo(*object), 2U);
    object = nullptr;
    EXPECT_EQ(counts.ends, 0);
    mayGoOn.open();

    EXPECT_TRUE(waitUntil([&] { return counts.ends == 1; }));
    EXPECT_EQ(counts.closes, 1);
}

TEST(ActiveObjectClose, ByStrangersConsumesOneHoldEach) {
    constexpr int threadCount = 4;
    constexpr int closesEach = 25;
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    Ref<ActiveCounter> object;
    worker->runSynchronously([&] { object = create<ActiveCounter>(counts); });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&] {
            for (int count = 0; count < closesEach; ++count) {
                object->holdClose();
                object->close();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    OneTimeGate allClosed;
    worker->postAndForget([&] { allClosed.open(); });
    ASSERT_TRUE(allClosed.pass());

    EXPECT_EQ(counts.closes, 0);
    EXPECT_EQ(object->holdClose(), 1);
}

TEST(ActiveObjectClose, ByAStrangerWithoutADispatcherDoesNothing) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);

    std::thread stranger([&] { object->close(); });
    stranger.join();

    EXPECT_EQ(counts.closes, 0);
    EXPECT_TRUE(object->isAlive.value());
    EXPECT_EQ(referencesTo(*object), 1U);
}

TEST(ActiveObjectClose, AfterItsDispatcherHasStoppedAStrangersCloseDoesNothing) {
    LifeCounts counts;
    DispatcherUse worker = Dispatcher::start();
    ActiveCounter* object = nullptr;
    worker->runSynchronously([&] { object = create<ActiveCounter>(counts).giveUp(); });
    worker = {};

    object->close();

    EXPECT_EQ(counts.closes, 0);
    EXPECT_EQ(referencesTo(*object), 1U);
    object->end();
}

}  // namespace
}  // namespace korva::framework
