#include "framework/nested_watch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "framework/active_object.h"
#include "framework/wiring.h"
#include "tests/support/diary_listener.h"

namespace korva::framework {
namespace {

using test::Diary;
using test::DiaryListener;

// Four values that a watch follows, one inside the other, the last one with every value.
class Plant final : public ObjectClass<Plant, ActiveObject>, public Wiring<Plant> {
public:
    explicit Plant(Diary& book) : diary(book) {}

    void begin() {
        running = watch(plan)
                      .whileSet(&Plant::takePlan, &Plant::dropPlan)
                      .then(crew)
                      .whileSet()
                      .then(power)
                      .whileSet([this] { note("power on"); }, [this] { note("power off"); })
                      .then(speed)
                      .onEveryValue(&Plant::start, &Plant::stop);
    }

    void setAll() {
        plan.set(1);
        crew.set(1);
        power.set(1);
        speed.set(1);
    }

    Observable<std::uint32_t> plan{*this};
    Observable<std::uint32_t> crew{*this};
    Observable<std::uint32_t> power{*this};
    Observable<std::uint32_t> speed{*this};
    NestedWatch running;

private:
    void onClose() override {
        running.drop();
        ActiveObject::onClose();
    }

    void note(const std::string& line) { diary.push_back(line); }
    void takePlan(std::uint32_t number) { note("plan " + std::to_string(number) + " taken"); }
    void dropPlan(std::uint32_t number) { note("plan " + std::to_string(number) + " dropped"); }
    void start(std::uint32_t number) { note("start " + std::to_string(number)); }
    void stop(std::uint32_t number) { note("stop " + std::to_string(number)); }

    Diary& diary;
};

class NestedWatchTest : public testing::Test {
protected:
    void beginWithAllSet() {
        plant->setAll();
        plant->begin();
        diary.clear();
    }

    Diary diary;
    Ref<Plant> plant = create<Plant>(diary);
};

TEST_F(NestedWatchTest, EntersNothingWhileTheFirstValueIsUnset) {
    plant->begin();

    plant->crew.set(1);
    plant->power.set(1);
    plant->speed.set(1);

    EXPECT_EQ(diary, Diary{});
}

TEST_F(NestedWatchTest, EntersLevelAfterLevelAsValuesAreSet) {
    plant->begin();

    plant->plan.set(7);
    plant->crew.set(1);
    EXPECT_EQ(diary, Diary{"plan 7 taken"});
    plant->power.set(1);

    EXPECT_EQ(diary, (Diary{"plan 7 taken", "power on", "start 0"}));
}

TEST_F(NestedWatchTest, EntersAllThatIsSetWhenItBegins) {
    plant->setAll();

    plant->begin();

    EXPECT_EQ(diary, (Diary{"plan 1 taken", "power on", "start 1"}));
}

TEST_F(NestedWatchTest, EntersAllThatIsSetWhenTheMissingValueComes) {
    plant->setAll();
    plant->crew.set(0);
    plant->begin();
    diary.clear();

    plant->crew.set(2);

    EXPECT_EQ(diary, (Diary{"power on", "start 1"}));
}

TEST_F(NestedWatchTest, LeavesFromTheInsideOutBeforeAValueGoes) {
    beginWithAllSet();

    plant->plan.set(0);

    EXPECT_EQ(diary, (Diary{"stop 1", "power off", "plan 1 dropped"}));
}

TEST_F(NestedWatchTest, AChangeFromOneSetValueToAnotherLeavesAndEntersAgain) {
    beginWithAllSet();

    plant->plan.set(2);

    EXPECT_EQ(diary, (Diary{"stop 1", "power off", "plan 1 dropped", "plan 2 taken", "power on", "start 1"}));
}

TEST_F(NestedWatchTest, AChangeInTheMiddleLeavesWhatIsAboveAlone) {
    beginWithAllSet();

    plant->crew.set(2);

    EXPECT_EQ(diary, (Diary{"stop 1", "power off", "power on", "start 1"}));
}

TEST_F(NestedWatchTest, OnEveryValueIsEnteredAndLeftWithTheDefaultToo) {
    beginWithAllSet();

    plant->speed.set(0);
    EXPECT_EQ(diary, (Diary{"stop 1", "start 0"}));
    diary.clear();
    plant->power.set(0);

    EXPECT_EQ(diary, (Diary{"stop 0", "power off"}));
}

TEST_F(NestedWatchTest, LevelsThatWereLeftAreNoLongerWatched) {
    beginWithAllSet();
    plant->plan.set(0);
    diary.clear();

    plant->crew.set(2);
    plant->power.set(2);
    plant->speed.set(2);

    EXPECT_EQ(diary, Diary{});
}

TEST_F(NestedWatchTest, DropLeavesWhatIsEntered) {
    beginWithAllSet();

    plant->running.drop();
    plant->plan.set(2);
    plant->speed.set(2);

    EXPECT_EQ(diary, (Diary{"stop 1", "power off", "plan 1 dropped"}));
}

TEST_F(NestedWatchTest, ASecondDropDoesNothing) {
    beginWithAllSet();
    plant->running.drop();
    diary.clear();

    plant->running.drop();

    EXPECT_EQ(diary, Diary{});
}

TEST_F(NestedWatchTest, DropLeavesNothingThatWasNotEntered) {
    plant->plan.set(1);
    plant->begin();
    diary.clear();

    plant->running.drop();

    EXPECT_EQ(diary, Diary{"plan 1 dropped"});
}

TEST_F(NestedWatchTest, TheEndOfItsOwnerLeavesWhatIsEntered) {
    beginWithAllSet();

    plant = nullptr;

    EXPECT_EQ(diary, (Diary{"stop 1", "power off", "plan 1 dropped"}));
}

TEST_F(NestedWatchTest, AnotherWatchInItsPlaceEndsIt) {
    beginWithAllSet();

    plant->begin();

    EXPECT_EQ(diary, (Diary{"plan 1 taken", "power on", "start 1", "stop 1", "power off", "plan 1 dropped"}));
}

TEST_F(NestedWatchTest, MovesWithoutLeaving) {
    beginWithAllSet();

    NestedWatch moved = std::move(plant->running);
    EXPECT_EQ(diary, Diary{});
    plant->speed.set(2);
    moved.drop();

    EXPECT_EQ(diary, (Diary{"stop 1", "start 2", "stop 2", "power off", "plan 1 dropped"}));
}

TEST_F(NestedWatchTest, ALevelThatBeginsBetweenItsValuesCommitAndFinishIsEnteredOnce) {
    plant->crew.set(1);
    plant->power.set(1);
    plant->begin();
    plant->speed.beginChange(5);
    plant->speed.commitChange();

    plant->plan.set(1);
    plant->speed.finishChange();
    EXPECT_EQ(diary, (Diary{"plan 1 taken", "power on", "start 5"}));
    diary.clear();
    plant->speed.set(6);

    EXPECT_EQ(diary, (Diary{"stop 5", "start 6"}));
}

TEST_F(NestedWatchTest, ALevelThatBeginsBeforeItsValuesCommitIsLeftAndEnteredAgain) {
    plant->crew.set(1);
    plant->power.set(1);
    plant->begin();
    plant->speed.beginChange(5);

    plant->plan.set(1);
    plant->speed.commitChange();
    plant->speed.finishChange();

    EXPECT_EQ(diary, (Diary{"plan 1 taken", "power on", "start 0", "stop 0", "start 5"}));
}

TEST_F(NestedWatchTest, DroppedByABeforeFunctionOfItsValueEachLevelIsLeftOnce) {
    DiaryListener other(diary, "other");
    other.subscribe(plant->speed);
    other.onBefore = [&] { plant->running.drop(); };
    beginWithAllSet();

    plant->speed.set(2);

    EXPECT_EQ(diary,
              (Diary{"other before 1 to 2", "stop 1", "power off", "plan 1 dropped", "other after 2 to 2"}));
}

TEST_F(NestedWatchTest, DroppedByAnAfterFunctionOfItsValueEachLevelIsLeftOnce) {
    DiaryListener other(diary, "other");
    other.subscribe(plant->speed);
    other.onAfter = [&] { plant->running.drop(); };
    beginWithAllSet();

    plant->speed.set(2);

    // The walk that runs still comes to the watch, which enters nothing any more.
    EXPECT_EQ(diary,
              (Diary{"other before 1 to 2", "stop 1", "other after 2 to 2", "power off", "plan 1 dropped"}));
}

TEST_F(NestedWatchTest, DroppedBehindItsOwnLevelsAfterFunctionItIsLeftToo) {
    beginWithAllSet();
    DiaryListener other(diary, "other");
    other.subscribe(plant->speed);
    other.onAfter = [&] { plant->running.drop(); };

    plant->speed.set(2);

    EXPECT_EQ(diary, (Diary{"stop 1", "other before 1 to 2", "start 2", "other after 2 to 2", "stop 2",
                            "power off", "plan 1 dropped"}));
}

TEST_F(NestedWatchTest, DroppedBetweenCommitAndFinishWhatWasLeftIsNotLeftAgain) {
    beginWithAllSet();
    plant->speed.beginChange(2);
    plant->speed.commitChange();
    EXPECT_EQ(diary, Diary{"stop 1"});

    plant->running.drop();
    plant->speed.finishChange();

    EXPECT_EQ(diary, (Diary{"stop 1", "power off", "plan 1 dropped"}));
}

TEST_F(NestedWatchTest, LeavesWithAValueThatIsOffWhenAnUpperLevelGoes) {
    beginWithAllSet();
    plant->speed.set(0);
    diary.clear();

    plant->crew.set(0);

    EXPECT_EQ(diary, (Diary{"stop 0", "power off"}));
}

TEST_F(NestedWatchTest, AnActionMayChangeAValueOfALevelBelow) {
    plant->setAll();
    DiaryListener taking(diary, "plan");
    taking.subscribe(plant->plan);
    taking.onBefore = [&] { plant->speed.set(9); };
    plant->begin();
    diary.clear();

    plant->plan.set(2);

    EXPECT_EQ(diary, (Diary{"plan before 1 to 2", "stop 1", "start 9", "stop 9", "power off",
                            "plan 1 dropped", "plan after 2 to 2", "plan 2 taken", "power on", "start 9"}));
}

TEST(NestedWatchAlone, IsNothingWithoutLevels) {
    NestedWatch none;
    none.drop();
    NestedWatch empty{std::vector<NestedWatch::Level>()};
    empty.drop();
}

}  // namespace
}  // namespace korva::framework
