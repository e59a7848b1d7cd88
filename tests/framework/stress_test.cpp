// Random objects on random threads, beside a model of each.
//
// KORVA_STRESS_SEED repeats the operations of a run (not how the threads interleave), KORVA_STRESS_SECONDS
// sets how long it takes: a minute by default.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <iostream>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "framework/dispatcher.h"
#include "tests/framework/stress_model.h"
#include "tests/framework/stress_thing.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::Call;
using test::Fate;
using test::Thing;
using test::ThingModel;

constexpr std::size_t dispatcherCount = 4;
constexpr std::size_t driverCount = 4;
constexpr std::size_t slotCount = 6;

using Dispatchers = std::array<DispatcherUse, dispatcherCount>;

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* const text = std::getenv(variable);
    return text == nullptr ? otherwise : std::stoull(text);
}

/// An object that everybody works on: what is certain is how often its listeners are called.
class SharedThing final : public ObjectClass<SharedThing, ActiveObject> {
public:
    Observable<std::uint32_t> value{*this};
    std::uint64_t beforeCalls = 0;  // the owner's, like the next one
    std::uint64_t afterCalls = 0;

    static void before(void* self, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
        ++static_cast<SharedThing*>(self)->beforeCalls;
    }
    static void after(void* self, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
        ++static_cast<SharedThing*>(self)->afterCalls;
    }
};

/// One object, and what its driver knows of it.
struct Slot {
    Fate* fate = nullptr;
    std::vector<Ref<Thing>> references;
    WeakRef<Thing> weak;
    ThingModel model;
    DispatcherUse owner;

    [[nodiscard]] bool isAlive() const noexcept { return !references.empty(); }
    Thing& thing() const { return *references.front(); }
};

/// Works on objects of its own, and with the others on the shared ones. Everything it does is checked at
/// once.
class Driver {
public:
    Driver(std::uint64_t seed, const Dispatchers& all, std::vector<Ref<SharedThing>>& sharedThings)
        : random(seed), dispatchers(all), shared(sharedThings) {}

    void run(std::chrono::steady_clock::time_point end) {
        while (std::chrono::steady_clock::now() < end && !testing::Test::HasFailure()) {
            step();
        }
        for (Slot& slot : slots) {
            if (slot.isAlive()) {
                releaseAll(slot);
            }
        }
    }

    std::uint64_t stepCount = 0;

private:
    std::uint32_t below(std::size_t limit) { return static_cast<std::uint32_t>(random() % limit); }
    bool coin() { return below(2) == 1; }
    Dispatcher& anyDispatcher() { return *dispatchers[below(dispatcherCount)]; }

    void step() {
        ++stepCount;
        Slot& slot = slots[below(slotCount)];
        if (!slot.isAlive()) {
            build(slot);
            return;
        }
        using Step = void (Driver::*)(Slot&);
        static constexpr std::array<Step, 15> steps{&Driver::addReference,  &Driver::dropReference,
                                                    &Driver::lockWeakly,    &Driver::hold,
                                                    &Driver::close,         &Driver::subscribe,
                                                    &Driver::unsubscribe,   &Driver::set,
                                                    &Driver::set,           &Driver::setThroughAnotherThread,
                                                    &Driver::postAndCancel, &Driver::postDelayed,
                                                    &Driver::workOnShared,  &Driver::releaseAll,
                                                    &Driver::dropReference};
        (this->*steps[below(steps.size())])(slot);
        if (slot.isAlive()) {
            check(slot);
        }
    }

    void build(Slot& slot) {
        EXPECT_FALSE(slot.weak.lock()) << "a weak reference to an object that is gone";
        slot = Slot();
        slot.fate = &fates.emplace_back();
        slot.owner = DispatcherUse(dispatchers[below(dispatcherCount)].ref());
        slot.owner->runSynchronously([&] {
            slot.references.push_back(create<Thing>(*slot.fate));
            slot.weak = WeakRef<Thing>(slot.thing());
        });
    }

    // Everything that this driver has posted to the object's thread has been done.
    static void settle(const Slot& slot) {
        slot.owner->post([] {}).waitUntilDone();
    }

    void check(Slot& slot) {
        std::vector<Call> calls;
        Thing& thing = slot.thing();
        thing.runOnOwner([&] { calls.swap(thing.calls); });
        EXPECT_EQ(calls, slot.model.takeExpected());
        EXPECT_EQ(thing.value.read(), slot.model.value);
        EXPECT_EQ(thing.doubled.read(), 2 * slot.model.value);
        EXPECT_EQ(thing.isAlive.read(), slot.model.closes == 0);
        EXPECT_EQ(slot.fate->closes, slot.model.closes);
        EXPECT_EQ(slot.fate->ends, 0);
        EXPECT_TRUE(slot.fate->wasOnOwner);
        EXPECT_EQ(thing.AddRef(), slot.model.references + 1);
        EXPECT_EQ(thing.Release(), slot.model.references);
    }

    void addReference(Slot& slot) {
        slot.references.push_back(slot.references.front());
        ++slot.model.references;
    }

    void dropReference(Slot& slot) {
        if (slot.references.size() > 1) {
            slot.references.pop_back();
            --slot.model.references;
        }
    }

    void lockWeakly(Slot& slot) { EXPECT_TRUE(slot.weak.lock() == slot.references.front()); }

    void hold(Slot& slot) { EXPECT_EQ(slot.thing().holdClose(), ++slot.model.holds); }

    void close(Slot& slot) {
        if (coin()) {
            slot.thing().close();
            settle(slot);
        } else {
            slot.thing().runOnOwner([&] { slot.thing().close(); });
        }
        slot.model.close();
    }

    void subscribe(Slot& slot) {
        const int index = static_cast<int>(below(Thing::listenerCount));
        if (slot.model.hasListener(index)) {
            return;
        }
        const auto position = static_cast<Position>(below(4));
        const bool before = coin();
        const bool after = coin();
        slot.thing().subscribe(index, position, before, after);
        slot.model.subscribe(index, position, before, after);
    }

    void unsubscribe(Slot& slot) {
        const int index = static_cast<int>(below(Thing::listenerCount));
        if (!slot.model.hasListener(index)) {
            return;
        }
        const bool before = coin();
        const bool after = coin();
        slot.thing().unsubscribe(index, before, after);
        slot.model.unsubscribe(index, before, after);
    }

    void set(Slot& slot) {
        const std::uint32_t next = below(4);
        EXPECT_EQ(slot.thing().value.set(next), slot.model.set(next));
    }

    void setThroughAnotherThread(Slot& slot) {
        const std::uint32_t next = below(4);
        std::uint32_t result = 1;
        EXPECT_TRUE(anyDispatcher().runSynchronously([&] { result = slot.thing().value.set(next); }));
        EXPECT_EQ(result, slot.model.set(next));
    }

    // Either it runs or it doesn't, and once it is known to be done it doesn't any more.
    void postAndCancel(Slot& slot) {
        std::atomic<int> runs{0};
        TaskHandle handle = slot.thing().postTask([&runs] { ++runs; });
        if (coin()) {
            handle.cancel();
        }
        handle.waitUntilDone();
        EXPECT_LE(runs, 1);
        TaskHandle certain = slot.thing().postTask([&runs] { runs = 5; }, {}, DispatchTask::Place::front);
        certain.waitUntilDone();
        EXPECT_EQ(runs, 5);
    }

    void postDelayed(Slot& slot) {
        std::atomic<int> runs{0};
        TaskHandle handle = slot.thing().postDelayed(1 + below(3), [&runs] { ++runs; });
        if (coin()) {
            handle.waitUntilDone();
            EXPECT_EQ(runs, 1);
        } else {
            auto laterRuns = std::make_shared<std::atomic<int>>(0);
            TaskHandle dropped = slot.thing().postDelayed(10'000, [laterRuns] { ++*laterRuns; });
            dropped = TaskHandle();
            handle.waitUntilDone();
            EXPECT_EQ(runs, 1);
            EXPECT_EQ(*laterRuns, 0);
        }
    }

    void workOnShared(Slot&) {
        SharedThing& thing = *shared[below(shared.size())];
        void* const context = &thing;
        thing.value.subscribe(context, &SharedThing::before, &SharedThing::after);
        thing.value.set(below(1000));
        thing.value.unsubscribe(context, &SharedThing::before, &SharedThing::after);
    }

    // The last reference goes on this thread, on the owner's or on a third one.
    void releaseAll(Slot& slot) {
        slot.references.resize(1);
        switch (below(3)) {
            case 0:
                slot.references.clear();
                break;
            case 1:
                slot.thing().postAndForget([last = std::move(slot.references.front())] {});
                break;
            default:
                anyDispatcher().postAndForget([last = std::move(slot.references.front())] {});
                break;
        }
        slot.references.clear();
        EXPECT_TRUE(test::waitUntil([&] { return slot.fate->ends.load() == 1; }));
        EXPECT_EQ(slot.fate->closes, 1);
        EXPECT_TRUE(slot.fate->wasOnOwner);
    }

    std::mt19937_64 random;
    const Dispatchers& dispatchers;
    std::vector<Ref<SharedThing>>& shared;
    std::deque<Fate> fates;
    std::array<Slot, slotCount> slots;
};

TEST(FrameworkStress, RandomObjectsOnRandomThreadsDoWhatTheirModelsSay) {
    const std::uint64_t seed = numberFrom("KORVA_STRESS_SEED", std::random_device()());
    const std::chrono::seconds duration(numberFrom("KORVA_STRESS_SECONDS", 60));
    std::cout << "KORVA_STRESS_SEED=" << seed << std::endl;
    SCOPED_TRACE("KORVA_STRESS_SEED=" + std::to_string(seed));
    const std::uint32_t threadsBefore = liveThreadCount().get();
    std::uint64_t stepCount = 0;
    {
        Dispatchers dispatchers;
        std::vector<Ref<SharedThing>> shared;
        for (DispatcherUse& dispatcher : dispatchers) {
            dispatcher = Dispatcher::start();
            dispatcher->runSynchronously([&] { shared.push_back(create<SharedThing>()); });
        }
        const auto end = std::chrono::steady_clock::now() + duration;
        std::vector<Driver> drivers;
        for (std::size_t i = 0; i < driverCount; ++i) {
            drivers.emplace_back(seed + i, dispatchers, shared);
        }
        std::vector<std::thread> threads;
        for (Driver& driver : drivers) {
            threads.emplace_back([&driver, end] { driver.run(end); });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        for (const Driver& driver : drivers) {
            stepCount += driver.stepCount;
        }
        for (const Ref<SharedThing>& thing : shared) {
            thing->runOnOwner([&] { EXPECT_EQ(thing->beforeCalls, thing->afterCalls); });
        }
    }
    std::cout << stepCount << " operations" << std::endl;
    EXPECT_GT(stepCount, 0U);
    EXPECT_EQ(liveThreadCount().get(), threadsBefore);
}

}  // namespace
}  // namespace korva::framework
