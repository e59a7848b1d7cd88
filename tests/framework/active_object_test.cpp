#include "framework/active_object.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "framework/dispatcher.h"
#include "tests/support/active_counter.h"
#include "tests/support/diary_listener.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::ActiveCounter;
using test::LifeCounts;
using test::OneTimeGate;
using test::referencesTo;
using test::waitUntil;

Ref<ActiveCounter> createOn(Dispatcher& worker, LifeCounts& counts) {
    Ref<ActiveCounter> object;
    worker.runSynchronously([&] { object = create<ActiveCounter>(counts); });
    return object;
}

void runOnPlainThread(const std::function<void()>& work) {
    std::thread thread(work);
    thread.join();
}

TEST(ActiveObject, BelongsToTheThreadThatMadeIt) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    const Ref<ActiveCounter> object = createOn(*worker, counts);

    bool isOwner = false;
    worker->runSynchronously([&] { isOwner = object->isOwnerThread(); });

    EXPECT_TRUE(isOwner);
    EXPECT_FALSE(object->isOwnerThread());
    EXPECT_EQ(object->dispatcher(), worker.get());
}

TEST(ActiveObject, MadeOnAThreadWithoutADispatcherItHasNone) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);

    EXPECT_TRUE(object->isOwnerThread());
    EXPECT_EQ(object->dispatcher(), nullptr);
}

TEST(ActiveObject, IsNotTakenOverByAThreadThatComesAfterItsOwner) {
    LifeCounts counts;
    ActiveCounter* object = nullptr;
    runOnPlainThread([&] { object = create<ActiveCounter>(counts).giveUp(); });

    // The system may well give these the number that the owner had.
    int owners = 0;
    for (int count = 0; count < 50; ++count) {
        runOnPlainThread([&] { owners += object->isOwnerThread() ? 1 : 0; });
    }

    EXPECT_EQ(owners, 0);
    object->end();
}

class Child final : public ObjectClass<Child, ActiveObject> {
public:
    Child() : wasAliveInConstructor(isAlive.value()) {}
    const bool wasAliveInConstructor;
};

TEST(ActiveObject, IsAliveOnceItsBaseIsBuilt) {
    const Ref<Child> child = create<Child>();

    EXPECT_TRUE(child->wasAliveInConstructor);
    EXPECT_TRUE(child->isAlive.value());
}

TEST(ActiveObject, CastsToItsClassAndItsBases) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);

    EXPECT_EQ(cast<ActiveObject>(object.get()), object.get());
    EXPECT_EQ(object->castTo(typeTag<ActiveCounter>()), object.get());
    EXPECT_EQ(cast<Child>(object.get()), nullptr);
}

TEST(ActiveObject, RunOnOwnerRunsThereAndWaits) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    const Ref<ActiveCounter> object = createOn(*worker, counts);
    bool wasOwner = false;

    EXPECT_TRUE(object->runOnOwner([&] { wasOwner = object->isOwnerThread(); }));

    EXPECT_TRUE(wasOwner);
}

TEST(ActiveObject, RunOnOwnerByTheOwnerRunsAtOnce) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    bool ran = false;

    EXPECT_TRUE(object->runOnOwner([&] { ran = true; }));

    EXPECT_TRUE(ran);
}

TEST(ActiveObject, RunOnOwnerRaisesWhatTheCallableRaises) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    const Ref<ActiveCounter> object = createOn(*worker, counts);

    EXPECT_THROW(object->runOnOwner([] { throw std::runtime_error("no"); }), std::runtime_error);
}

TEST(ActiveObject, PostTaskRunsOnTheOwner) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    const Ref<ActiveCounter> object = createOn(*worker, counts);
    std::atomic<bool> wasOwner{false};

    const TaskHandle task = object->postTask([&] { wasOwner = object->isOwnerThread(); });
    task.waitUntilDone();

    EXPECT_TRUE(wasOwner);
}

TEST(ActiveObject, PostDelayedRunsOnTheOwner) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    const Ref<ActiveCounter> object = createOn(*worker, counts);
    std::atomic<bool> wasOwner{false};

    const TaskHandle task = object->postDelayed(1, [&] { wasOwner = object->isOwnerThread(); });
    task.waitUntilDone();

    EXPECT_TRUE(wasOwner);
}

TEST(ActiveObject, ATaskWhoseHandleIsDroppedNeverRuns) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    const Ref<ActiveCounter> object = createOn(*worker, counts);
    OneTimeGate mayGoOn;
    OneTimeGate isPast;
    bool ran = false;
    object->postAndForget([&] { EXPECT_TRUE(mayGoOn.pass()); });

    static_cast<void>(object->postTask([&] { ran = true; }));
    object->postAndForget([&] { isPast.open(); });
    mayGoOn.open();
    ASSERT_TRUE(isPast.pass());

    EXPECT_FALSE(ran);
}

TEST(ActiveObject, WithoutADispatcherStrangersPostAndRunNothing) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    bool ran = false;
    bool accepted = true;
    TaskHandle task;
    TaskHandle delayed;

    runOnPlainThread([&] {
        accepted = object->runOnOwner([&] { ran = true; });
        task = object->postTask([&] { ran = true; });
        delayed = object->postDelayed(0, [&] { ran = true; });
        object->postAndForget([&] { ran = true; });
    });

    EXPECT_FALSE(accepted);
    EXPECT_FALSE(ran);
    EXPECT_FALSE(task);
    EXPECT_FALSE(delayed);
}

TEST(ActiveObject, RunOnOwnerGivesFalseOnceTheDispatcherHasStopped) {
    LifeCounts counts;
    DispatcherUse worker = Dispatcher::start();
    ActiveCounter* const object = createOn(*worker, counts).giveUp();
    worker = {};
    bool ran = false;

    EXPECT_FALSE(object->runOnOwner([&] { ran = true; }));

    EXPECT_FALSE(ran);
    object->end();
}

TEST(ActiveObject, TheLastReleaseOnTheOwnerClosesThenEndsAtOnce) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);

    object = nullptr;

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.ends, 1);
    EXPECT_EQ(counts.endsUnclosed, 0);
}

TEST(ActiveObject, TheLastReleaseByAStrangerClosesAndEndsItOnTheOwner) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    Ref<ActiveCounter> object = createOn(*worker, counts);
    std::uint32_t owner = 0;
    worker->runSynchronously([&] { owner = currentThreadNumber(); });

    object = nullptr;
    ASSERT_TRUE(waitUntil([&] { return counts.ends == 1; }));

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.endsUnclosed, 0);
    EXPECT_EQ(counts.closingThread, owner);
    EXPECT_EQ(counts.endingThread, owner);
    EXPECT_NE(owner, currentThreadNumber());
}

TEST(ActiveObject, TheLastReleaseByAStrangerWithoutADispatcherLeavesTheMemoryAllocated) {
    LifeCounts counts;
    ActiveCounter* object = nullptr;
    {
        Ref<ActiveCounter> created = create<ActiveCounter>(counts);
        object = created.get();
        runOnPlainThread([&] { created = nullptr; });
    }

    EXPECT_EQ(counts.closes, 0);
    EXPECT_EQ(counts.ends, 0);
    object->end();
}

TEST(ActiveObject, TheLastReleaseAfterItsDispatcherHasStoppedLeavesTheMemoryAllocated) {
    LifeCounts counts;
    DispatcherUse worker = Dispatcher::start();
    Ref<ActiveCounter> created = createOn(*worker, counts);
    ActiveCounter* const object = created.get();
    worker = {};

    created = nullptr;

    EXPECT_EQ(counts.ends, 0);
    object->end();
}

TEST(ActiveObject, CountersOutliveItAndTellOfItsEnd) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    const Ref<WaitableCounter> closed = object->closedCounter();
    const Ref<WaitableCounter> destroyed = object->destroyedCounter();
    EXPECT_EQ(closed->get(), 0U);

    object->close();
    EXPECT_EQ(closed->get(), 1U);
    EXPECT_EQ(destroyed->get(), 0U);
    object = nullptr;

    EXPECT_EQ(destroyed->get(), 1U);
}

TEST(ActiveObject, AWorkerThatWaitsForItsCloseIsWoken) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    std::atomic<bool> begun{false};
    bool woken = false;
    std::thread worker([&, closed = object->closedCounter()] {
        std::uint32_t seen = 0;
        begun = true;
        woken = closed->waitFor(seen, 20000);
    });
    ASSERT_TRUE(waitUntil([&] { return begun.load(); }));

    object->close();
    worker.join();

    EXPECT_TRUE(woken);
}

TEST(ActiveObject, TheThreadThatWasStartedForItEndsWithIt) {
    const std::uint32_t threadsBefore = liveThreadCount().get();
    LifeCounts counts;
    Ref<ActiveCounter> object;
    {
        DispatcherUse worker = Dispatcher::start(RootType::of<ActiveCounter>());
        object = createOn(*worker, counts);
        worker->runSynchronously([&] { object->ownDispatcher(std::move(worker)); });
    }
    EXPECT_EQ(liveThreadCount().get(), threadsBefore + 1);

    object = nullptr;

    EXPECT_TRUE(waitUntil([&] { return liveThreadCount().get() == threadsBefore; }));
    EXPECT_EQ(counts.ends, 1);
}

TEST(ActiveObject, TwoThreadsThatDropTheLastTwoReferencesEndItOnceOnItsOwner) {
    constexpr int objectCount = 1000;
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    std::vector<Ref<ActiveCounter>> ones;
    worker->runSynchronously([&] {
        for (int count = 0; count < objectCount; ++count) {
            ones.push_back(create<ActiveCounter>(counts));
        }
    });
    std::vector<Ref<ActiveCounter>> others = ones;
    std::atomic<int> ready{0};
    const auto dropAll = [&ready](std::vector<Ref<ActiveCounter>>& references) {
        ++ready;
        while (ready != 2) {
        }
        for (Ref<ActiveCounter>& reference : references) {
            reference = nullptr;
        }
    };

    std::thread one([&] { dropAll(ones); });
    std::thread other([&] { dropAll(others); });
    one.join();
    other.join();

    EXPECT_TRUE(waitUntil([&] { return counts.ends == objectCount; }));
    EXPECT_EQ(counts.closes, objectCount);
}

using Lines = std::vector<std::string>;

// Writes down which of its listeners come and go.
class Hooked final : public ObjectClass<Hooked, ActiveObject> {
public:
    explicit Hooked(Lines& book) : diary(book) {}

    Observable<std::uint32_t> value{*this};

protected:
    void onPropagatorAdded(ListenedTo&, void*, ListenerFunction function, Position position) override {
        write("propagator added", function == &test::DiaryListener::propagated, position);
    }
    void onPropagatorRemoved(ListenedTo&, void*, ListenerFunction function) override {
        write("propagator removed", function == &test::DiaryListener::propagated, Position::last);
    }
    void onSubscriberAdded(ListenedTo&, void*, ListenerFunction after, Position position) override {
        write("subscriber added", after == &test::DiaryListener::after, position);
    }
    void onSubscriberRemoved(ListenedTo&, void*, ListenerFunction after) override {
        write("subscriber removed", after == &test::DiaryListener::after, Position::last);
    }

private:
    void write(const std::string& what, bool isRightFunction, Position position) {
        diary.push_back(what + (isRightFunction ? " at " : " wrong at ") +
                        std::to_string(static_cast<std::uint32_t>(position)));
    }

    Lines& diary;
};

TEST(ActiveObject, HooksTellOfListenersBeforeTheseAreCalled) {
    Lines diary;
    const Ref<Hooked> object = create<Hooked>(diary);
    test::DiaryListener listener(diary, "meter");

    listener.propagate(object->value, Position::first, true);
    listener.subscribe(object->value, Position::beforeLast, true, true);
    EXPECT_EQ(diary,
              (Lines{"propagator added at 1", "meter propagates 0 to 0 (subscribed)", "subscriber added at 2",
                     "meter before 0 to 0 (subscribed)", "meter after 0 to 0 (subscribed)"}));

    diary.clear();
    listener.stopPropagating(object->value);
    listener.unsubscribe(object->value, true, true);
    EXPECT_EQ(diary, (Lines{"propagator removed at 0", "subscriber removed at 0",
                            "meter after 0 to 0 (removed)", "meter before 0 to 0 (removed)"}));
}

TEST(ActiveObject, HooksAreSilentWhenNoListenerGoes) {
    Lines diary;
    const Ref<Hooked> object = create<Hooked>(diary);
    test::DiaryListener listener(diary, "meter");

    listener.unsubscribe(object->value, true, true);
    listener.stopPropagating(object->value);

    EXPECT_EQ(diary, Lines{});
}

}  // namespace
}  // namespace korva::framework
