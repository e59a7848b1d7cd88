// Values that other threads than their owner's use.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <thread>
#include <vector>

#include "framework/dispatcher.h"
#include "framework/observable.h"
#include "tests/support/diary_listener.h"
#include "tests/support/value_owner.h"

namespace korva::framework {
namespace {

using test::Diary;
using test::DiaryListener;
using Owner = test::ValueOwner<std::uint32_t>;

void runOnPlainThread(const std::function<void()>& work) {
    std::thread thread(work);
    thread.join();
}

Ref<Owner> createOn(Dispatcher& worker) {
    Ref<Owner> owner;
    worker.runSynchronously([&] { owner = create<Owner>(); });
    return owner;
}

// A value of a dispatcher's thread, used by the test's own thread, which has none.
class ObservableThreads : public testing::Test {
protected:
    const DispatcherUse worker = Dispatcher::start();
    const Ref<Owner> owner = createOn(*worker);
    Observable<std::uint32_t>& value = owner->value;
    Diary diary;
    DiaryListener meter{diary, "meter"};
};

TEST_F(ObservableThreads, AStrangersSetRunsOnTheOwnersThreadAndIsDoneWhenItComesBack) {
    bool wasOwner = false;
    meter.onAfter = [&] { wasOwner = owner->isOwnerThread(); };
    EXPECT_EQ(meter.subscribe(value), 64U);

    EXPECT_EQ(value.set(5), 0U);

    EXPECT_TRUE(wasOwner);
    EXPECT_EQ(diary, (Diary{"meter before 0 to 5", "meter after 5 to 5"}));
    EXPECT_EQ(value.read(), 5U);
    EXPECT_EQ(value.set(5), 2U);
}

TEST_F(ObservableThreads, EachPhaseCanBeAskedForByAStranger) {
    EXPECT_NE(meter.propagate(value), 0U);
    meter.subscribe(value);

    EXPECT_EQ(value.beginChange(5), 0U);
    EXPECT_EQ(value.beginChange(5), 2U);
    EXPECT_EQ(value.read(), 0U);
    value.commitChange();
    EXPECT_EQ(value.read(), 5U);
    value.finishChange();

    EXPECT_EQ(diary, (Diary{"meter propagates 0 to 5", "meter before 0 to 5", "meter after 5 to 5"}));
}

TEST_F(ObservableThreads, AStrangersListenersComeAndGo) {
    meter.propagate(value, Position::last, true);
    meter.subscribe(value, Position::last, true, true);
    meter.unsubscribe(value, true, true);
    meter.stopPropagating(value);
    EXPECT_EQ(diary.size(), 5U);

    value.set(5);

    EXPECT_EQ(diary.size(), 5U);
}

TEST_F(ObservableThreads, ResetAndPulseWorkForStrangers) {
    value.set(5);
    EXPECT_EQ(value.reset(), 0U);
    EXPECT_EQ(value.read(), 0U);

    EXPECT_EQ(value.set(5, Observable<std::uint32_t>::pulse), 0U);

    EXPECT_EQ(value.read(), 0U);
}

TEST_F(ObservableThreads, WhatAListenerRaisesReachesTheStrangerWhoSetTheValue) {
    meter.onBefore = [] { throw std::runtime_error("listener"); };
    meter.subscribe(value);

    EXPECT_THROW(value.set(5), std::runtime_error);

    EXPECT_EQ(value.set(6), 0U);
    EXPECT_EQ(value.read(), 0U);
}

TEST_F(ObservableThreads, ChangesByManyThreadsAreServedOneByOne) {
    constexpr std::uint32_t threadCount = 4;
    constexpr std::uint32_t changesEach = 300;
    std::uint32_t calls = 0;  // of the owner's thread only
    meter.onAfter = [&] { ++calls; };
    meter.subscribe(value);
    std::vector<std::thread> threads;
    for (std::uint32_t thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, first = 1 + thread * changesEach] {
            for (std::uint32_t change = 0; change < changesEach; ++change) {
                EXPECT_EQ(value.set(first + change), 0U);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(calls, threadCount * changesEach);
}

TEST_F(ObservableThreads, AListenerMaySetAValueOfTheThreadThatWaits) {
    const DispatcherUse second = Dispatcher::start();
    const Ref<Owner> other = createOn(*second);
    meter.onAfter = [&] { other->value.set(6); };
    meter.subscribe(value);

    second->runSynchronously([&] {
        value.set(5);
        EXPECT_EQ(other->value.value(), 6U);
    });

    EXPECT_EQ(value.read(), 5U);
}

TEST_F(ObservableThreads, TwoOwnersThatSetEachOthersValuesBothComeBack) {
    const DispatcherUse second = Dispatcher::start();
    const Ref<Owner> other = createOn(*second);
    constexpr std::uint32_t changes = 500;
    const auto setAll = [](Observable<std::uint32_t>& target) {
        for (std::uint32_t number = 1; number <= changes; ++number) {
            target.set(number);
        }
    };

    std::thread here([&] { worker->runSynchronously([&] { setAll(other->value); }); });
    std::thread there([&] { second->runSynchronously([&] { setAll(value); }); });
    here.join();
    there.join();

    EXPECT_EQ(value.read(), changes);
    EXPECT_EQ(other->value.read(), changes);
}

TEST(ObservableWithoutADispatcher, AStrangerDoesNothingAndGets0) {
    const Ref<Owner> owner = create<Owner>();
    Observable<std::uint32_t>& value = owner->value;
    Diary diary;
    DiaryListener meter(diary, "meter");
    value.set(5);
    std::vector<std::uint32_t> results;

    runOnPlainThread([&] {
        results = {value.set(5),         value.set(6),
                   value.reset(),        value.beginChange(5),
                   value.beginChange(7), meter.propagate(value, Position::last, true),
                   value.read(),         meter.subscribe(value, Position::last, true, true)};
        value.commitChange();
        value.finishChange();
        meter.unsubscribe(value, true, true);
        meter.stopPropagating(value);
    });

    EXPECT_EQ(results, std::vector<std::uint32_t>(8, 0));
    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(value.pending(), 5U);
    EXPECT_EQ(diary, Diary{});
}

TEST(ObservableWithoutADispatcher, AStrangerCannotRemoveTheOwnersListener) {
    const Ref<Owner> owner = create<Owner>();
    Diary diary;
    DiaryListener meter(diary, "meter");
    meter.subscribe(owner->value);

    runOnPlainThread([&] { meter.unsubscribe(owner->value); });
    owner->value.set(5);

    EXPECT_EQ(diary.size(), 2U);
}

constexpr std::uint32_t standard = 100;

class Gain final : public ObjectClass<Gain, ActiveObject> {
public:
    Observable<std::uint32_t> gain{*this, standard};

    void end() { delete this; }
};

TEST(ObservableOfAStoppedDispatcher, ASetIsIgnoredAndReadGivesTheDefault) {
    DispatcherUse worker = Dispatcher::start();
    Gain* object = nullptr;
    worker->runSynchronously([&] {
        object = create<Gain>().giveUp();
        object->gain.set(7);
    });
    EXPECT_EQ(object->gain.read(), 7U);
    worker = {};
    Diary diary;
    DiaryListener meter(diary, "meter");

    EXPECT_EQ(object->gain.set(8), 0U);
    EXPECT_EQ(object->gain.beginChange(8), 0U);
    EXPECT_EQ(meter.subscribe(object->gain, Position::last, true, true), 0U);
    EXPECT_EQ(meter.propagate(object->gain, Position::last, true), 0U);

    EXPECT_EQ(object->gain.read(), standard);
    EXPECT_EQ(object->gain.value(), 7U);
    EXPECT_EQ(diary, Diary{});
    object->end();
}

}  // namespace
}  // namespace korva::framework
