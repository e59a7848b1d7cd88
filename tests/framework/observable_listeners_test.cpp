// Who is called when listeners come and go, at rest and in the middle of a change.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/observable.h"
#include "tests/support/diary_listener.h"
#include "tests/support/value_owner.h"

namespace korva::framework {
namespace {

using test::Diary;
using test::DiaryListener;
using Owner = test::ValueOwner<std::uint32_t>;

class ObservableListeners : public testing::Test {
protected:
    void subscribeAll() {
        for (DiaryListener* listener : {&a, &b, &c}) {
            listener->subscribe(value);
        }
    }
    void propagateAll() {
        for (DiaryListener* listener : {&a, &b, &c}) {
            listener->propagate(value);
        }
    }

    const Ref<Owner> owner = create<Owner>();
    Observable<std::uint32_t>& value = owner->value;
    Diary diary;
    DiaryListener a{diary, "a"};
    DiaryListener b{diary, "b"};
    DiaryListener c{diary, "c"};
    DiaryListener late{diary, "late"};
};

TEST_F(ObservableListeners, AHandleIsAnIndexTimes64) {
    EXPECT_EQ(a.subscribe(value), 64U);
    EXPECT_EQ(b.subscribe(value), 128U);
    EXPECT_EQ(a.propagate(value), 64U);
}

struct Placed {
    std::size_t present;
    Position position;
    std::string order;
};

class ObservablePosition : public testing::TestWithParam<Placed> {
protected:
    static char nameOf(const std::string& line) { return line.front(); }

    const Ref<Owner> owner = create<Owner>();
    Diary diary;
    DiaryListener a{diary, "a"};
    DiaryListener b{diary, "b"};
    DiaryListener c{diary, "c"};
    DiaryListener x{diary, "x"};
    const std::vector<DiaryListener*> others{&a, &b, &c};
};

TEST_P(ObservablePosition, IsTheOrderOfBothFunctionsOfSubscribers) {
    for (std::size_t index = 0; index < GetParam().present; ++index) {
        others[index]->subscribe(owner->value);
    }
    x.subscribe(owner->value, GetParam().position);

    owner->value.set(1);

    std::string called;
    for (const std::string& line : diary) {
        called += nameOf(line);
    }
    EXPECT_EQ(called, GetParam().order + GetParam().order);
}

TEST_P(ObservablePosition, IsTheOrderOfPropagators) {
    for (std::size_t index = 0; index < GetParam().present; ++index) {
        others[index]->propagate(owner->value);
    }
    x.propagate(owner->value, GetParam().position);

    owner->value.set(1);

    std::string called;
    for (const std::string& line : diary) {
        called += nameOf(line);
    }
    EXPECT_EQ(called, GetParam().order);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, ObservablePosition,
    testing::Values(Placed{0, Position::last, "x"}, Placed{1, Position::last, "ax"},
                    Placed{2, Position::last, "abx"}, Placed{3, Position::last, "abcx"},
                    Placed{0, Position::first, "x"}, Placed{1, Position::first, "xa"},
                    Placed{2, Position::first, "xab"}, Placed{3, Position::first, "xabc"},
                    Placed{0, Position::beforeLast, "x"}, Placed{1, Position::beforeLast, "xa"},
                    Placed{2, Position::beforeLast, "axb"}, Placed{3, Position::beforeLast, "abxc"},
                    Placed{0, Position::afterFirst, "x"}, Placed{1, Position::afterFirst, "ax"},
                    Placed{2, Position::afterFirst, "axb"}, Placed{3, Position::afterFirst, "axbc"}));

TEST_F(ObservableListeners, SubscribeCallsTheFunctionsThatAreAskedForBeforeFirst) {
    value.set(5);

    a.subscribe(value);
    EXPECT_EQ(diary, Diary{});
    a.subscribe(value, Position::last, true, false);
    b.subscribe(value, Position::last, false, true);
    c.subscribe(value, Position::first, true, true);

    EXPECT_EQ(diary, (Diary{"a before 5 to 5 (subscribed)", "b after 5 to 5 (subscribed)",
                            "c before 5 to 5 (subscribed)", "c after 5 to 5 (subscribed)"}));
}

TEST_F(ObservableListeners, SubscribeDuringAChangeGivesThePublishedValueTwice) {
    value.beginChange(5);

    a.subscribe(value, Position::last, true, true);

    EXPECT_EQ(diary, (Diary{"a before 0 to 0 (subscribed)", "a after 0 to 0 (subscribed)"}));
}

TEST_F(ObservableListeners, APropagatorThatAsksForItIsCalledWithThePublishedValue) {
    value.set(5);
    value.beginChange(6);

    a.propagate(value, Position::last, true);
    b.propagate(value);

    EXPECT_EQ(diary, Diary{"a propagates 5 to 5 (subscribed)"});
}

TEST_F(ObservableListeners, UnsubscribeCallsTheFunctionsThatAreAskedForAfterFirst) {
    value.set(5);
    subscribeAll();

    a.unsubscribe(value, true, true);
    b.unsubscribe(value, true, false);
    c.unsubscribe(value, false, true);

    EXPECT_EQ(diary, (Diary{"a after 5 to 5 (removed)", "a before 5 to 5 (removed)",
                            "b before 5 to 5 (removed)", "c after 5 to 5 (removed)"}));
    diary.clear();
    value.set(6);
    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservableListeners, UnsubscribeOfNobodyCallsNobody) {
    b.subscribe(value);

    a.unsubscribe(value, true, true);
    EXPECT_EQ(diary, Diary{});
    value.set(5);

    EXPECT_EQ(diary, (Diary{"b before 0 to 5", "b after 5 to 5"}));
}

TEST_F(ObservableListeners, UnsubscribeWithBothFunctionsNullRemovesNobody) {
    value.subscribe(&a, &DiaryListener::before, nullptr);
    value.subscribe(&a, nullptr, &DiaryListener::after);
    value.subscribe(&a, nullptr, nullptr);

    value.unsubscribe(&a, nullptr, nullptr);
    value.set(5);

    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "a after 5 to 5"}));
}

TEST_F(ObservableListeners, ANullFunctionIsNotWhatAListenerIsFoundBy) {
    value.subscribe(&a, &DiaryListener::before, &DiaryListener::after);
    value.subscribe(&a, nullptr, nullptr);

    value.unsubscribe(&a, nullptr, &DiaryListener::after);
    value.set(5);

    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservableListeners, TheBeforeFunctionIsSoughtFirst) {
    a.subscribe(value);
    value.subscribe(&a, nullptr, &DiaryListener::after);

    a.unsubscribe(value);
    value.set(5);

    EXPECT_EQ(diary, Diary{"a after 5 to 5"});
}

TEST_F(ObservableListeners, ThenTheAfterFunctionIsSought) {
    a.subscribe(value);
    value.subscribe(&a, nullptr, &DiaryListener::after);

    value.unsubscribe(&a, &DiaryListener::propagated, &DiaryListener::after);
    value.set(5);

    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "a after 5 to 5"}));
}

TEST_F(ObservableListeners, OneFoundByItsBeforeFunctionGoesWhateverItsAfterFunctionIs) {
    a.subscribe(value);

    value.unsubscribe(&a, &DiaryListener::before, &DiaryListener::propagated);
    value.set(5);

    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservableListeners, TheLastOneThatMatchesGoes) {
    subscribeAll();

    value.unsubscribe(nullptr, &DiaryListener::before, nullptr);
    value.set(5);

    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "b before 0 to 5", "a after 5 to 5", "b after 5 to 5"}));
}

TEST_F(ObservableListeners, AContextOtherThanNullHasToMatch) {
    subscribeAll();

    value.unsubscribe(&a, &DiaryListener::before, &DiaryListener::after);
    value.unsubscribe(&late, &DiaryListener::before, &DiaryListener::after);
    value.set(5);

    EXPECT_EQ(diary, (Diary{"b before 0 to 5", "c before 0 to 5", "b after 5 to 5", "c after 5 to 5"}));
}

TEST_F(ObservableListeners, ASubscriberThatCameTwiceIsCalledTwiceAndGoesOnceEach) {
    a.subscribe(value);
    a.subscribe(value);
    value.set(5);
    EXPECT_EQ(diary.size(), 4U);
    diary.clear();

    a.unsubscribe(value);
    value.set(6);
    EXPECT_EQ(diary.size(), 2U);
    diary.clear();
    a.unsubscribe(value);
    value.set(7);

    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservableListeners, RemovePropagatorTakesTheLastThatMatches) {
    propagateAll();

    value.removePropagator(nullptr, &DiaryListener::propagated);
    value.removePropagator(&a, &DiaryListener::propagated);
    value.removePropagator(&late, &DiaryListener::propagated);
    value.removePropagator(&b, &DiaryListener::before);
    value.set(5);

    EXPECT_EQ(diary, Diary{"b propagates 0 to 5"});
}

TEST_F(ObservableListeners, ASubscriberThatComesInABeforeFunctionComesAfterTheRest) {
    subscribeAll();
    a.onBefore = [&] {
        late.subscribe(value);
        diary.push_back("a goes on");
    };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "b before 0 to 5", "c before 0 to 5", "a goes on",
                            "a after 5 to 5", "b after 5 to 5", "c after 5 to 5", "late after 5 to 5"}));
}

TEST_F(ObservableListeners, ASubscriberThatComesInABeforeFunctionAndIsCalledAtOnceSeesTheOldValue) {
    subscribeAll();
    a.onBefore = [&] { late.subscribe(value, Position::first, true, true); };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "b before 0 to 5", "c before 0 to 5",
                            "late before 0 to 0 (subscribed)", "late after 0 to 0 (subscribed)",
                            "late after 5 to 5", "a after 5 to 5", "b after 5 to 5", "c after 5 to 5"}));
}

TEST_F(ObservableListeners, ASubscriberThatComesInAnAfterFunctionIsToldOfTheNextChange) {
    subscribeAll();
    a.onAfter = [&] {
        a.onAfter = nullptr;
        late.subscribe(value);
        diary.push_back("a goes on");
    };
    value.set(5);
    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "b before 0 to 5", "c before 0 to 5", "a after 5 to 5",
                            "b after 5 to 5", "c after 5 to 5", "a goes on"}));
    diary.clear();

    value.set(6);

    EXPECT_EQ(diary.size(), 8U);
    EXPECT_EQ(diary.back(), "late after 6 to 6");
}

TEST_F(ObservableListeners, TheLastSubscribersListIsEditedAtOnce) {
    a.subscribe(value);
    a.onBefore = [&] {
        late.subscribe(value);
        diary.push_back("a goes on");
    };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "a goes on", "a after 5 to 5", "late after 5 to 5"}));
}

TEST_F(ObservableListeners, ASubscriberThatLeavesInItsAfterFunctionLeavesAfterTheRest) {
    subscribeAll();
    a.onAfter = [&] {
        a.unsubscribe(value);
        diary.push_back("a goes on");
    };
    value.set(5);
    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "b before 0 to 5", "c before 0 to 5", "a after 5 to 5",
                            "b after 5 to 5", "c after 5 to 5", "a goes on"}));
    diary.clear();

    value.set(6);

    EXPECT_EQ(diary, (Diary{"b before 5 to 6", "c before 5 to 6", "b after 6 to 6", "c after 6 to 6"}));
}

TEST_F(ObservableListeners, OneThatIsRemovedByAnotherIsServedBefore) {
    subscribeAll();
    a.onBefore = [&] {
        b.unsubscribe(value);
        diary.push_back("a goes on");
    };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "b before 0 to 5", "c before 0 to 5", "a goes on",
                            "a after 5 to 5", "c after 5 to 5"}));
}

TEST_F(ObservableListeners, OneThatLeavesWhileBeforeFunctionsRunGetsItsAfterFunctionOnly) {
    subscribeAll();
    a.onBefore = [&] {
        diary.clear();
        b.unsubscribe(value, true, true);
    };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"b before 0 to 5", "c before 0 to 5", "b after 0 to 0 (removed)",
                            "a after 5 to 5", "c after 5 to 5"}));
}

TEST_F(ObservableListeners, OneThatLeavesBetweenCommitAndFinishGetsItsAfterFunctionOnly) {
    a.subscribe(value);
    value.beginChange(5);
    value.commitChange();
    diary.clear();

    a.unsubscribe(value, true, true);
    value.finishChange();

    EXPECT_EQ(diary, Diary{"a after 5 to 5 (removed)"});
}

TEST_F(ObservableListeners, OneThatLeavesWhileAfterFunctionsRunGetsItsBeforeFunctionOnly) {
    subscribeAll();
    a.onAfter = [&] {
        diary.clear();
        b.unsubscribe(value, true, true);
    };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"b after 5 to 5", "c after 5 to 5", "b before 5 to 5 (removed)"}));
}

TEST_F(ObservableListeners, OneThatLeavesBetweenBeginAndCommitGetsBothFunctions) {
    a.subscribe(value);
    value.beginChange(5);

    a.unsubscribe(value, true, true);
    value.commitChange();
    value.finishChange();

    EXPECT_EQ(diary, (Diary{"a after 0 to 0 (removed)", "a before 0 to 0 (removed)"}));
}

TEST_F(ObservableListeners, OneThatLeavesWhilePropagatorsRunGetsBothFunctions) {
    a.subscribe(value);
    b.propagate(value);
    b.onPropagate = [&](std::uint32_t&) { a.unsubscribe(value, true, true); };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"b propagates 0 to 5", "a after 0 to 0 (removed)", "a before 0 to 0 (removed)"}));
}

TEST_F(ObservableListeners, APropagatorThatComesWhilePropagatorsRunComesAfterTheRest) {
    propagateAll();
    a.onPropagate = [&](std::uint32_t&) {
        late.propagate(value, Position::last, true);
        diary.push_back("a goes on");
        a.onPropagate = nullptr;
    };
    value.set(5);
    EXPECT_EQ(diary, (Diary{"a propagates 0 to 5", "b propagates 0 to 5", "c propagates 0 to 5",
                            "late propagates 0 to 0 (subscribed)", "a goes on"}));
    EXPECT_EQ(value.value(), 5U);
    diary.clear();

    value.set(6);

    EXPECT_EQ(diary.back(), "late propagates 5 to 6");
}

TEST_F(ObservableListeners, APropagatorThatLeavesWhilePropagatorsRunLeavesAfterTheRest) {
    propagateAll();
    a.onPropagate = [&](std::uint32_t&) {
        b.stopPropagating(value);
        diary.push_back("a goes on");
    };

    value.set(5);
    EXPECT_EQ(diary,
              (Diary{"a propagates 0 to 5", "b propagates 0 to 5", "c propagates 0 to 5", "a goes on"}));
    diary.clear();
    value.set(6);

    EXPECT_EQ(diary, (Diary{"a propagates 5 to 6", "c propagates 5 to 6", "a goes on"}));
}

TEST_F(ObservableListeners, ASubscriberThatComesWhilePropagatorsRunIsPartOfTheChange) {
    a.propagate(value);
    b.propagate(value);
    a.onPropagate = [&](std::uint32_t&) { late.subscribe(value); };

    value.set(5);

    EXPECT_EQ(diary, (Diary{"a propagates 0 to 5", "b propagates 0 to 5", "late before 0 to 5",
                            "late after 5 to 5"}));
}

TEST_F(ObservableListeners, APropagatorThatComesWhileSubscribersAreServedDoesNotHurryThem) {
    a.subscribe(value);
    b.subscribe(value);
    a.onBefore = [&] {
        late.propagate(value);
        diary.push_back("a goes on");
    };

    value.set(5);

    EXPECT_EQ(diary,
              (Diary{"a before 0 to 5", "a goes on", "b before 0 to 5", "a after 5 to 5", "b after 5 to 5"}));
}

TEST_F(ObservableListeners, TheListsGrowUnderAWalk) {
    std::vector<std::unique_ptr<DiaryListener>> crowd;
    const auto join = [&] {
        for (int count = 0; count < 100; ++count) {
            crowd.push_back(std::make_unique<DiaryListener>(diary, "crowd"));
            crowd.back()->subscribe(value);
            crowd.back()->propagate(value);
        }
    };
    a.propagate(value);
    b.propagate(value);
    subscribeAll();
    a.onPropagate = [&](std::uint32_t&) { join(); };
    a.onBefore = join;
    c.onBefore = join;
    a.onAfter = join;

    value.set(5);

    // 100 came in time for the before functions, 200 more for the after functions.
    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(diary.size(), 2U + 3U + 100U + 3U + 300U);
    EXPECT_EQ(crowd.size(), 400U);
}

TEST_F(ObservableListeners, NodesOfThoseWhoLeftAreUsedAgain) {
    const SlotHandle first = a.subscribe(value);
    for (int count = 0; count < 1000; ++count) {
        a.unsubscribe(value);
        ASSERT_EQ(a.subscribe(value), first);
    }
}

TEST_F(ObservableListeners, OneThatIsAddedByTheLastBeforeFunctionMayLeaveInTheSameChange) {
    a.subscribe(value);
    a.onBefore = [&] { late.subscribe(value); };
    late.onAfter = [&] { late.unsubscribe(value); };

    value.set(5);
    EXPECT_EQ(diary, (Diary{"a before 0 to 5", "a after 5 to 5", "late after 5 to 5"}));
    a.onBefore = nullptr;
    diary.clear();
    value.set(6);

    EXPECT_EQ(diary, (Diary{"a before 5 to 6", "a after 6 to 6"}));
}

}  // namespace
}  // namespace korva::framework
