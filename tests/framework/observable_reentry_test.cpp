// What a value does when its own listeners change it, and when they raise exceptions.
#include <gtest/gtest.h>

#include <cstdint>
#include <stdexcept>

#include "framework/observable.h"
#include "tests/support/diary_listener.h"
#include "tests/support/value_owner.h"

namespace korva::framework {
namespace {

using test::Diary;
using test::DiaryListener;
using Owner = test::ValueOwner<std::uint32_t>;

// A value with three listeners in a row.
class ObservableReentry : public testing::Test {
protected:
    void propagateAll() {
        for (DiaryListener* listener : {&first, &second, &third}) {
            listener->propagate(value);
        }
    }
    void subscribeAll() {
        for (DiaryListener* listener : {&first, &second, &third}) {
            listener->subscribe(value);
        }
    }

    const Ref<Owner> owner = create<Owner>();
    Observable<std::uint32_t>& value = owner->value;
    Diary diary;
    DiaryListener first{diary, "first"};
    DiaryListener second{diary, "second"};
    DiaryListener third{diary, "third"};
};

TEST_F(ObservableReentry, APropagatorThatWritesThePublishedValueBackSuppressesTheSubscribers) {
    first.propagate(value);
    second.subscribe(value);
    first.onPropagate = [](std::uint32_t& pending) { pending = 0; };

    EXPECT_EQ(value.set(5), 0U);

    EXPECT_EQ(diary, Diary{"first propagates 0 to 5"});
    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(value.set(0), 2U);
}

TEST_F(ObservableReentry, WhatAPropagatorWritesIsWhatLaterOnesAndSubscribersSee) {
    propagateAll();
    third.subscribe(value);
    second.onPropagate = [](std::uint32_t& pending) { pending = 4; };

    value.set(5);

    EXPECT_EQ(value.value(), 4U);
    EXPECT_EQ(diary, (Diary{"first propagates 0 to 5", "second propagates 0 to 5", "third propagates 0 to 4",
                            "third before 0 to 4", "third after 4 to 4"}));
}

TEST_F(ObservableReentry, AReplacingPropagatorRunsAllPropagatorsAgainAndEndsTheOuterRun) {
    propagateAll();
    third.subscribe(value);
    std::uint32_t result = 99;
    second.onPropagate = [&](std::uint32_t& pending) {
        if (pending == 5) {
            result = value.beginChange(7);
        }
    };

    EXPECT_EQ(value.set(5), 0U);

    EXPECT_EQ(result, 0U);
    EXPECT_EQ(value.value(), 7U);
    EXPECT_EQ(diary, (Diary{"first propagates 0 to 5", "second propagates 0 to 5", "first propagates 0 to 7",
                            "second propagates 0 to 7", "third propagates 0 to 7", "third before 0 to 7",
                            "third after 7 to 7"}));
}

TEST_F(ObservableReentry, APropagatorThatBeginsThePendingValueChangesNothing) {
    propagateAll();
    std::uint32_t result = 99;
    second.onPropagate = [&](std::uint32_t&) { result = value.beginChange(5); };

    value.set(5);

    EXPECT_EQ(result, 0U);
    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(diary,
              (Diary{"first propagates 0 to 5", "second propagates 0 to 5", "third propagates 0 to 5"}));
}

TEST_F(ObservableReentry, ASecondReplacementIsDropped) {
    propagateAll();
    std::uint32_t result = 99;
    second.onPropagate = [&](std::uint32_t& pending) {
        if (pending == 5) {
            value.beginChange(7);
        } else {
            result = value.beginChange(9);
        }
    };

    value.set(5);

    EXPECT_EQ(result, 0U);
    EXPECT_EQ(value.value(), 7U);
    EXPECT_EQ(diary, (Diary{"first propagates 0 to 5", "second propagates 0 to 5", "first propagates 0 to 7",
                            "second propagates 0 to 7", "third propagates 0 to 7"}));
}

TEST_F(ObservableReentry, AWholeSetFromAPropagatorReplacesTheValueAndIsCommittedByTheOuterOne) {
    propagateAll();
    third.subscribe(value);
    second.onPropagate = [&](std::uint32_t& pending) {
        if (pending == 5) {
            EXPECT_EQ(value.set(7), 0U);
            EXPECT_EQ(value.value(), 0U);
        }
    };

    value.set(5);

    EXPECT_EQ(value.value(), 7U);
    EXPECT_EQ(diary, (Diary{"first propagates 0 to 5", "second propagates 0 to 5", "first propagates 0 to 7",
                            "second propagates 0 to 7", "third propagates 0 to 7", "third before 0 to 7",
                            "third after 7 to 7"}));
}

TEST_F(ObservableReentry, AfterANestedSetOfThePendingValueALaterPropagatorBeginsAnew) {
    // The nested set ends with the value idle. So what the second one does is a change of its own each time,
    // not one replacement of which the next would be dropped.
    first.propagate(value);
    second.propagate(value);
    first.onPropagate = [&](std::uint32_t& pending) { value.set(pending); };
    second.onPropagate = [&](std::uint32_t& pending) {
        if (pending < 11) {
            value.beginChange(pending + 2);
        }
    };

    value.set(7);

    EXPECT_EQ(value.value(), 11U);
    EXPECT_EQ(diary,
              (Diary{"first propagates 0 to 7", "second propagates 0 to 7", "first propagates 0 to 9",
                     "second propagates 0 to 9", "first propagates 0 to 11", "second propagates 0 to 11"}));
}

TEST_F(ObservableReentry, APropagatorCanNeitherCommitNorFinishTheChange) {
    first.propagate(value);
    second.subscribe(value);
    first.onPropagate = [&](std::uint32_t&) {
        value.commitChange();
        EXPECT_EQ(value.value(), 0U);
        value.finishChange();
    };

    value.set(5);

    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(diary, (Diary{"first propagates 0 to 5", "second before 0 to 5", "second after 5 to 5"}));
}

TEST_F(ObservableReentry, ASetFromABeforeFunctionIsDropped) {
    first.propagate(value);
    first.subscribe(value);
    second.subscribe(value);
    std::uint32_t result = 99;
    first.onBefore = [&] { result = value.set(9); };

    value.set(5);

    EXPECT_EQ(result, 0U);
    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(value.pending(), 5U);
    EXPECT_EQ(diary, (Diary{"first propagates 0 to 5", "first before 0 to 5", "second before 0 to 5",
                            "first after 5 to 5", "second after 5 to 5"}));
}

TEST_F(ObservableReentry, ASetFromAnAfterFunctionIsDropped) {
    first.propagate(value);
    first.subscribe(value);
    second.subscribe(value);
    std::uint32_t result = 99;
    first.onAfter = [&] { result = value.set(9); };

    value.set(5);

    EXPECT_EQ(result, 0U);
    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(value.pending(), 5U);
    EXPECT_EQ(diary, (Diary{"first propagates 0 to 5", "first before 0 to 5", "second before 0 to 5",
                            "first after 5 to 5", "second after 5 to 5"}));
}

TEST_F(ObservableReentry, APulseFromASubscriberIsDroppedWhole) {
    first.subscribe(value);
    first.onAfter = [&] { value.set(9, Observable<std::uint32_t>::pulse); };

    value.set(5);

    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(diary, (Diary{"first before 0 to 5", "first after 5 to 5"}));
}

TEST_F(ObservableReentry, BeforeFunctionsCanNeitherCommitNorFinish) {
    first.subscribe(value);
    second.subscribe(value);
    first.onBefore = [&] {
        value.commitChange();
        value.finishChange();
        EXPECT_EQ(value.value(), 0U);
    };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"first before 0 to 5", "second before 0 to 5", "first after 5 to 5",
                            "second after 5 to 5"}));
}

TEST_F(ObservableReentry, AfterFunctionsCanNeitherCommitNorFinish) {
    first.subscribe(value);
    second.subscribe(value);
    first.onAfter = [&] {
        value.commitChange();
        value.finishChange();
    };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"first before 0 to 5", "second before 0 to 5", "first after 5 to 5",
                            "second after 5 to 5"}));
}

TEST_F(ObservableReentry, TheValueCanBeSetAgainOnceTheChangeIsOver) {
    subscribeAll();
    first.onAfter = [&] { value.set(9); };
    value.set(5);

    EXPECT_EQ(value.set(9), 0U);

    EXPECT_EQ(value.value(), 9U);
}

TEST(ObservableReentryOfTwo, ASubscriberMayChangeAnotherValueWhichRunsWhole) {
    const auto owner = create<test::PairOwner<std::uint32_t>>();
    Diary diary;
    DiaryListener outer(diary, "outer");
    DiaryListener inner(diary, "inner");
    outer.subscribe(owner->first);
    inner.subscribe(owner->second);
    outer.onBefore = [&] { owner->second.set(6); };
    inner.onAfter = [&] { EXPECT_EQ(owner->first.set(9), 0U); };

    owner->first.set(5);

    EXPECT_EQ(owner->first.value(), 5U);
    EXPECT_EQ(owner->second.value(), 6U);
    EXPECT_EQ(diary, (Diary{"outer before 0 to 5", "inner before 0 to 6", "inner after 6 to 6",
                            "outer after 5 to 5"}));
}

[[noreturn]] void raise() {
    throw std::runtime_error("listener");
}

TEST_F(ObservableReentry, WhatABeforeFunctionRaisesPassesAndLeavesTheValueInItsChange) {
    subscribeAll();
    second.onBefore = [] { raise(); };

    EXPECT_THROW(value.set(5), std::runtime_error);
    second.onBefore = nullptr;

    EXPECT_EQ(diary, (Diary{"first before 0 to 5", "second before 0 to 5"}));
    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(value.set(6), 0U);
    EXPECT_EQ(value.set(7), 0U);
    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(diary.size(), 2U);
}

TEST_F(ObservableReentry, WhatAnAfterFunctionRaisesPassesAndLeavesTheValueInItsChange) {
    subscribeAll();
    second.onAfter = [] { raise(); };

    EXPECT_THROW(value.set(5), std::runtime_error);
    second.onAfter = nullptr;
    diary.clear();

    EXPECT_EQ(value.set(6), 0U);
    EXPECT_EQ(value.set(7), 0U);
    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservableReentry, WhatAPropagatorRaisesPassesAndTheNextSetIsLost) {
    first.propagate(value);
    second.subscribe(value);
    first.onPropagate = [](std::uint32_t&) { raise(); };
    EXPECT_THROW(value.set(5), std::runtime_error);
    first.onPropagate = nullptr;
    diary.clear();

    EXPECT_EQ(value.set(6), 0U);

    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(diary, Diary{"first propagates 0 to 6"});
}

TEST_F(ObservableReentry, AListenerThatComesAfterAnExceptionFirstCompletesTheWalk) {
    subscribeAll();
    first.onBefore = [] { raise(); };
    EXPECT_THROW(value.set(5), std::runtime_error);
    diary.clear();

    DiaryListener late(diary, "late");
    late.subscribe(value);

    EXPECT_EQ(diary, (Diary{"second before 0 to 5", "third before 0 to 5"}));
}

}  // namespace
}  // namespace korva::framework
