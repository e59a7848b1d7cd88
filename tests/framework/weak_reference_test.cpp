#include "framework/weak_reference.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "framework/active_object.h"
#include "framework/dispatcher.h"
#include "tests/support/active_counter.h"
#include "tests/support/one_time_gate.h"

namespace korva::framework {
namespace {

using test::ActiveCounter;
using test::LifeCounts;
using test::OneTimeGate;
using test::referencesTo;

TEST(WeakReference, LockGivesAReferenceToALivingObject) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    const WeakRef<ActiveCounter> weak(*object);

    const Ref<ActiveCounter> locked = weak.lock();

    EXPECT_EQ(locked, object);
    EXPECT_EQ(referencesTo(*object), 2U);
}

TEST(WeakReference, LockOfADeadObjectGivesNull) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    const WeakRef<ActiveCounter> weak(*object);

    object = nullptr;

    EXPECT_EQ(counts.ends, 1);
    EXPECT_EQ(weak.lock(), nullptr);
}

TEST(WeakReference, DoesNotKeepTheObjectAlive) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    const Ref<WeakReference> weak = object->getWeak();

    EXPECT_EQ(referencesTo(*object), 1U);
    object = nullptr;

    EXPECT_EQ(counts.ends, 1);
}

TEST(WeakReference, IsOneForAnObjectAndEachHolderHasAShare) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);

    EXPECT_EQ(object->getWeak(), object->getWeak());
}

TEST(WeakReference, StaysGoodWhileOneOfSeveralHoldersGoes) {
    LifeCounts counts;
    const Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    const WeakRef<ActiveCounter> kept(*object);
    { const WeakRef<ActiveCounter> gone(*object); }

    EXPECT_EQ(kept.lock(), object);
}

TEST(WeakReference, EmptyLocksToNull) {
    const WeakRef<ActiveCounter> none;

    EXPECT_FALSE(none);
    EXPECT_EQ(none.lock(), nullptr);
}

TEST(WeakReference, ALockedReferenceKeepsTheObjectAliveAlone) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    Ref<ActiveCounter> locked = WeakRef<ActiveCounter>(*object).lock();

    object = nullptr;
    EXPECT_EQ(counts.ends, 0);
    locked = nullptr;

    EXPECT_EQ(counts.ends, 1);
}

TEST(WeakReference, AskedForWhileTheObjectIsDestroyedItLocksToNull) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    Ref<WeakReference> late;
    object->atClose = [&](ActiveCounter& self) { late = self.getWeak(); };

    object = nullptr;

    ASSERT_EQ(counts.ends, 1);
    ASSERT_NE(late, nullptr);
    EXPECT_EQ(late->lock(), nullptr);
}

TEST(WeakReference, LocksToNullDuringTheCloseOfADestroyedObject) {
    LifeCounts counts;
    Ref<ActiveCounter> object = create<ActiveCounter>(counts);
    const WeakRef<ActiveCounter> weak(*object);
    bool isAlive = true;
    object->atClose = [&](ActiveCounter&) { isAlive = weak.lock() != nullptr; };

    object = nullptr;

    EXPECT_FALSE(isAlive);
}

// Its constructor does what the test says.
class SlowlyBuilt final : public ObjectClass<SlowlyBuilt, ActiveObject> {
public:
    explicit SlowlyBuilt(const std::function<void(SlowlyBuilt&)>& construction) {
        construction(*this);
        isBuilt = true;
    }

    std::atomic<bool> isBuilt{false};
};

TEST(WeakReference, LockedWhileTheConstructorStillRunsItWaitsForItsEnd) {
    const DispatcherUse worker = Dispatcher::start();
    OneTimeGate known;
    OneTimeGate asking;
    OneTimeGate answered;
    WeakRef<SlowlyBuilt> weak;
    bool wasBuilt = false;
    std::thread holder([&] {
        ASSERT_TRUE(known.pass());
        asking.open();
        const Ref<SlowlyBuilt> locked = weak.lock();
        wasBuilt = locked && locked->isBuilt;
        answered.open();
    });

    Ref<SlowlyBuilt> object;
    bool answeredEarly = true;
    worker->runSynchronously([&] {
        object = create<SlowlyBuilt>([&](SlowlyBuilt& self) {
            weak = WeakRef<SlowlyBuilt>(self);
            known.open();
            ASSERT_TRUE(asking.pass());
            answeredEarly = answered.passWithin(std::chrono::milliseconds(50));
        });
    });
    EXPECT_TRUE(answered.pass());
    holder.join();

    EXPECT_FALSE(answeredEarly);
    EXPECT_TRUE(wasBuilt);
}

TEST(WeakReference, AConstructorThatRaisesLetsItsWaitersGoWithNull) {
    const DispatcherUse worker = Dispatcher::start();
    OneTimeGate known;
    std::atomic<int> asking{0};
    std::atomic<int> nulls{0};
    WeakRef<SlowlyBuilt> weak;
    const auto hold = [&] {
        ASSERT_TRUE(known.pass());
        ++asking;
        nulls += weak.lock() == nullptr ? 1 : 0;
    };
    std::thread one(hold);
    std::thread other(hold);

    worker->runSynchronously([&] {
        EXPECT_THROW(static_cast<void>(create<SlowlyBuilt>([&](SlowlyBuilt& self) {
                         weak = WeakRef<SlowlyBuilt>(self);
                         known.open();
                         while (asking != 2) {
                             std::this_thread::yield();
                         }
                         throw std::runtime_error("no object");
                     })),
                     std::runtime_error);
    });
    one.join();
    other.join();

    EXPECT_EQ(nulls, 2);
    EXPECT_EQ(weak.lock(), nullptr);
}

TEST(WeakReference, OnTheBuildingThreadItGivesNullInsteadOfWaitingForItself) {
    const DispatcherUse worker = Dispatcher::start();
    bool inConstructor = true;
    bool afterwards = false;

    worker->runSynchronously([&] {
        const Ref<SlowlyBuilt> object = create<SlowlyBuilt>(
            [&](SlowlyBuilt& self) { inConstructor = WeakRef<SlowlyBuilt>(self).lock() != nullptr; });
        afterwards = WeakRef<SlowlyBuilt>(*object).lock() == object;
    });

    EXPECT_FALSE(inConstructor);
    EXPECT_TRUE(afterwards);
}

TEST(WeakReference, WithoutADispatcherAnObjectCanBeLockedWhileItIsBuilt) {
    bool inConstructor = false;

    const Ref<SlowlyBuilt> object = create<SlowlyBuilt>(
        [&](SlowlyBuilt& self) { inConstructor = WeakRef<SlowlyBuilt>(self).lock() != nullptr; });

    EXPECT_TRUE(inConstructor);
    EXPECT_EQ(referencesTo(*object), 1U);
}

TEST(WeakReference, LocksAndTheLastReleaseMeetWithoutATouchOfTheDead) {
    LifeCounts counts;
    const DispatcherUse worker = Dispatcher::start();
    constexpr int objectCount = 500;
    std::vector<Ref<ActiveCounter>> objects;
    std::vector<WeakRef<ActiveCounter>> weaks;
    worker->runSynchronously([&] {
        for (int count = 0; count < objectCount; ++count) {
            objects.push_back(create<ActiveCounter>(counts));
            weaks.emplace_back(*objects.back());
        }
    });

    std::atomic<int> ready{0};
    const auto meet = [&ready] {
        ++ready;
        while (ready != 2) {
        }
    };
    std::thread dropping([&] {
        meet();
        for (Ref<ActiveCounter>& object : objects) {
            object = nullptr;
        }
    });
    std::thread locking([&] {
        meet();
        for (const WeakRef<ActiveCounter>& weak : weaks) {
            if (const Ref<ActiveCounter> locked = weak.lock()) {
                EXPECT_GE(referencesTo(*locked), 1U);
            }
        }
    });
    dropping.join();
    locking.join();
    // The ends were posted before this task, which goes last.
    OneTimeGate allEnded;
    worker->postAndForget([&] { allEnded.open(); });
    ASSERT_TRUE(allEnded.pass());

    EXPECT_EQ(counts.ends, objectCount);
    EXPECT_EQ(counts.closes, objectCount);
}

}  // namespace
}  // namespace korva::framework
