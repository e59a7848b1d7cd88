#include <gtest/gtest.h>

#include <cstdint>

#include "framework/observable.h"
#include "tests/support/diary_listener.h"
#include "tests/support/value_owner.h"

namespace korva::framework {
namespace {

using test::Diary;
using test::DiaryListener;
using Owner = test::ValueOwner<std::uint32_t>;

// A value that one listener follows in all phases.
class ObservablePhases : public testing::Test {
protected:
    ObservablePhases() {
        meter.propagate(value);
        meter.subscribe(value);
    }

    const Ref<Owner> owner = create<Owner>();
    Observable<std::uint32_t>& value = owner->value;
    Diary diary;
    DiaryListener meter{diary, "meter"};
};

TEST_F(ObservablePhases, BeginOnlyPropagates) {
    EXPECT_EQ(value.beginChange(5), 0U);

    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(value.pending(), 5U);
    EXPECT_EQ(diary, Diary{"meter propagates 0 to 5"});
}

TEST_F(ObservablePhases, CommitRunsTheBeforeFunctionsAndPublishes) {
    value.beginChange(5);
    diary.clear();

    value.commitChange();

    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(diary, Diary{"meter before 0 to 5"});
}

TEST_F(ObservablePhases, FinishRunsTheAfterFunctions) {
    value.beginChange(5);
    value.commitChange();
    diary.clear();

    value.finishChange();

    EXPECT_EQ(diary, Diary{"meter after 5 to 5"});
}

TEST_F(ObservablePhases, CommitWithoutBeginDoesNothing) {
    value.commitChange();
    value.finishChange();

    EXPECT_EQ(diary, Diary{});
    EXPECT_EQ(value.set(5), 0U);
    EXPECT_EQ(value.value(), 5U);
}

TEST_F(ObservablePhases, FinishWithoutBeginDoesNothing) {
    value.finishChange();

    EXPECT_EQ(diary, Diary{});
    EXPECT_EQ(value.set(5), 0U);
    EXPECT_EQ(value.value(), 5U);
}

TEST_F(ObservablePhases, ASecondCommitDoesNothing) {
    value.beginChange(5);
    value.commitChange();
    diary.clear();

    value.commitChange();
    EXPECT_EQ(diary, Diary{});
    value.finishChange();

    EXPECT_EQ(diary, Diary{"meter after 5 to 5"});
}

TEST_F(ObservablePhases, ASecondFinishDoesNothing) {
    value.beginChange(5);
    value.commitChange();
    value.finishChange();
    diary.clear();

    value.finishChange();

    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservablePhases, ASecondBeginBeforeTheCommitReplacesTheFirst) {
    value.beginChange(5);
    EXPECT_EQ(value.beginChange(6), 0U);
    value.commitChange();
    value.finishChange();

    EXPECT_EQ(diary, (Diary{"meter propagates 0 to 5", "meter propagates 0 to 6", "meter before 0 to 6",
                            "meter after 6 to 6"}));
}

TEST_F(ObservablePhases, BeginWithThePendingValueGives2AndLeavesTheChangeToBeCommitted) {
    value.beginChange(5);
    diary.clear();

    EXPECT_EQ(value.beginChange(5), 2U);
    EXPECT_EQ(diary, Diary{});
    value.commitChange();

    EXPECT_EQ(value.value(), 5U);
}

TEST_F(ObservablePhases, SetOfThePendingValueGives2AndEndsTheChangeThatWasBegun) {
    value.beginChange(5);

    EXPECT_EQ(value.set(5), 2U);

    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(diary, (Diary{"meter propagates 0 to 5", "meter before 0 to 5", "meter after 5 to 5"}));
}

TEST_F(ObservablePhases, AChangeThatComesBackBeforeTheCommitTellsNoSubscriber) {
    value.beginChange(5);
    EXPECT_EQ(value.beginChange(0), 0U);
    diary.clear();

    value.commitChange();
    value.finishChange();

    EXPECT_EQ(diary, Diary{});
    EXPECT_EQ(value.value(), 0U);
}

TEST_F(ObservablePhases, AChangeThatCameBackLeavesTheValueReadyForTheNext) {
    value.beginChange(5);
    value.beginChange(0);
    value.commitChange();
    value.finishChange();
    diary.clear();

    value.set(7);

    EXPECT_EQ(diary, (Diary{"meter propagates 0 to 7", "meter before 0 to 7", "meter after 7 to 7"}));
}

TEST_F(ObservablePhases, BeginAfterTheCommitFirstFinishesTheFormerChange) {
    value.beginChange(5);
    value.commitChange();
    diary.clear();

    EXPECT_EQ(value.beginChange(6), 0U);

    EXPECT_EQ(diary, (Diary{"meter after 5 to 5", "meter propagates 5 to 6"}));
}

TEST_F(ObservablePhases, SetAfterTheCommitFirstFinishesTheFormerChange) {
    value.beginChange(5);
    value.commitChange();
    diary.clear();

    value.set(6);

    EXPECT_EQ(diary, (Diary{"meter after 5 to 5", "meter propagates 5 to 6", "meter before 5 to 6",
                            "meter after 6 to 6"}));
}

TEST_F(ObservablePhases, BeginWithTheCommittedValueFinishesTheFormerChangeAndGives2) {
    value.beginChange(5);
    value.commitChange();
    diary.clear();

    EXPECT_EQ(value.beginChange(5), 2U);

    EXPECT_EQ(diary, Diary{"meter after 5 to 5"});
}

TEST_F(ObservablePhases, BeginAfterTheCommitOfNoChangeCallsNoAfterFunction) {
    value.beginChange(5);
    value.beginChange(0);
    value.commitChange();
    diary.clear();

    value.beginChange(6);

    EXPECT_EQ(diary, Diary{"meter propagates 0 to 6"});
}

TEST_F(ObservablePhases, FinishWithoutCommitDropsTheChangeAndRemembersThePendingValue) {
    value.beginChange(5);
    value.finishChange();
    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(value.pending(), 5U);

    EXPECT_EQ(value.set(5), 2U);
    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(value.set(6), 0U);
    EXPECT_EQ(value.value(), 6U);

    EXPECT_EQ(diary, (Diary{"meter propagates 0 to 5", "meter propagates 0 to 6", "meter before 0 to 6",
                            "meter after 6 to 6"}));
}

TEST_F(ObservablePhases, SetBackToThePublishedValueAfterADroppedChangePropagatesOnly) {
    value.beginChange(5);
    value.finishChange();
    diary.clear();

    EXPECT_EQ(value.set(0), 0U);

    EXPECT_EQ(diary, Diary{"meter propagates 0 to 0"});
}

}  // namespace
}  // namespace korva::framework
