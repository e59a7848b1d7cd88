#include "framework/observable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "framework/active_object.h"
#include "tests/support/counting_listener.h"
#include "tests/support/diary_listener.h"
#include "tests/support/value_owner.h"

namespace korva::framework {
namespace {

using test::CountingListener;
using test::Diary;
using test::DiaryListener;
using Owner = test::ValueOwner<std::uint32_t>;

constexpr std::int32_t unknown = -1;

class Session final : public ObjectClass<Session, ActiveObject> {
public:
    Observable<std::int32_t> sessionState{*this, unknown};
};

class ObservableTest : public testing::Test {
protected:
    const Ref<Owner> owner = create<Owner>();
    Observable<std::uint32_t>& value = owner->value;
    Diary diary;
    DiaryListener meter{diary, "meter"};
};

TEST_F(ObservableTest, StartsAtItsDefault) {
    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(value.pending(), 0U);
    EXPECT_EQ(value.defaultValue(), 0U);
    EXPECT_TRUE(value.isDefault());
}

TEST_F(ObservableTest, SetRunsPropagatorsThenBeforeThenAfterFunctions) {
    meter.propagate(value);
    meter.subscribe(value);

    EXPECT_EQ(value.set(5), 0U);

    EXPECT_EQ(value.value(), 5U);
    EXPECT_EQ(diary, (Diary{"meter propagates 0 to 5", "meter before 0 to 5", "meter after 5 to 5"}));
}

TEST_F(ObservableTest, SetToThePresentValueGives2AndCallsNobody) {
    value.set(5);
    meter.propagate(value);
    meter.subscribe(value);

    EXPECT_EQ(value.set(5), 2U);

    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservableTest, SetToThePresentValueGives2WithoutListenersToo) {
    EXPECT_EQ(value.set(5), 0U);
    EXPECT_EQ(value.set(5), 2U);
    EXPECT_EQ(value.set(6), 0U);
    EXPECT_EQ(value.value(), 6U);
}

TEST_F(ObservableTest, TheFirstSetToTheDefaultChangesNothing) {
    meter.subscribe(value);

    EXPECT_EQ(value.set(0), 2U);

    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservableTest, ResetSetsTheDefault) {
    value.set(5);
    meter.subscribe(value);

    EXPECT_EQ(value.reset(), 0U);
    EXPECT_EQ(value.reset(), 2U);

    EXPECT_TRUE(value.isDefault());
    EXPECT_EQ(diary, (Diary{"meter before 5 to 0", "meter after 0 to 0"}));
}

TEST_F(ObservableTest, NullFunctionsAreSkipped) {
    value.addPropagator(nullptr, nullptr);
    value.subscribe(nullptr, nullptr, nullptr, Position::last, true, true);
    value.subscribe(&meter, nullptr, &DiaryListener::after);
    value.subscribe(&meter, &DiaryListener::before, nullptr);

    value.set(5);

    EXPECT_EQ(diary, (Diary{"meter before 0 to 5", "meter after 5 to 5"}));
}

TEST_F(ObservableTest, APulseComesBackToTheDefault) {
    meter.subscribe(value);

    EXPECT_EQ(value.set(5, Observable<std::uint32_t>::pulse), 0U);

    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(diary, (Diary{"meter before 0 to 5", "meter after 5 to 5", "meter before 5 to 0",
                            "meter after 0 to 0"}));
}

TEST_F(ObservableTest, APulseOfThePresentValueStillComesBack) {
    value.set(5);
    meter.subscribe(value);

    EXPECT_EQ(value.set(5, Observable<std::uint32_t>::pulse), 2U);

    EXPECT_EQ(diary, (Diary{"meter before 5 to 0", "meter after 0 to 0"}));
}

TEST_F(ObservableTest, APulseOfTheDefaultCallsNobody) {
    meter.subscribe(value);

    EXPECT_EQ(value.set(0, Observable<std::uint32_t>::pulse), 2U);

    EXPECT_EQ(diary, Diary{});
}

TEST_F(ObservableTest, OtherFlagsAreNoPulse) {
    value.set(5, 2);

    EXPECT_EQ(value.value(), 5U);
}

TEST_F(ObservableTest, ReadAndValueGiveThePublishedValueDuringAChange) {
    value.beginChange(5);

    EXPECT_EQ(value.read(), 0U);
    EXPECT_EQ(value.value(), 0U);
    EXPECT_EQ(value.pending(), 5U);
    value.commitChange();
    EXPECT_EQ(value.read(), 5U);
}

TEST(Observable, ItsOwnDefaultIsItsInitialValue) {
    const Ref<Session> session = create<Session>();

    EXPECT_EQ(session->sessionState.value(), -1);
    EXPECT_EQ(session->sessionState.pending(), -1);
    EXPECT_TRUE(session->sessionState.isDefault());
    EXPECT_EQ(session->sessionState.set(0), 0U);
    EXPECT_FALSE(session->sessionState.isDefault());
    session->sessionState.reset();
    EXPECT_EQ(session->sessionState.value(), -1);
}

struct Heard {
    const ListenedTo* source;
    const ActiveObject* owner;
    const void* published;
    const void* pending;
    std::int32_t defaultValue;
    Reason reason;

    bool operator==(const Heard&) const = default;
};

void hear(void* context, ListenedTo& source, ActiveObject& owner, const void* published, void* pending,
          const void* defaultValue, Reason reason) {
    static_cast<std::vector<Heard>*>(context)->push_back(
        {&source, &owner, published, pending, *static_cast<const std::int32_t*>(defaultValue), reason});
}

TEST(Observable, ListenersAreGivenTheValueItsOwnerAndItsDefault) {
    const Ref<Session> session = create<Session>();
    Observable<std::int32_t>& state = session->sessionState;
    std::vector<Heard> heard;
    state.addPropagator(&heard, &hear);
    state.subscribe(&heard, &hear, &hear, Position::last, true, false);

    state.set(1);
    state.unsubscribe(&heard, &hear, &hear, false, true);

    const void* const published = &state.value();
    const void* const pending = &state.pending();
    const Heard atSubscription{&state, session.get(), published, published, -1, Reason::subscribed};
    const Heard atChange{&state, session.get(), published, pending, -1, Reason::change};
    const Heard atRemoval{&state, session.get(), published, published, -1, Reason::removed};
    EXPECT_EQ(heard, (std::vector<Heard>{atSubscription, atChange, atChange, atChange, atRemoval}));
}

TEST(Observable, ManyValuesOfOneObjectDoNotDisturbEachOther) {
    class Board final : public ObjectClass<Board, ActiveObject> {
    public:
        Observable<std::uint32_t> one{*this};
        Observable<bool> two{*this};
        Observable<std::uint64_t> three{*this};
    };
    const Ref<Board> board = create<Board>();
    CountingListener one;
    CountingListener two;
    CountingListener three;
    one.listenTo(board->one);
    two.listenTo(board->two);
    three.listenTo(board->three);

    board->two.set(true);
    board->three.set(1);
    board->three.set(2);

    EXPECT_EQ(one.afters, 0);
    EXPECT_EQ(two.afters, 1);
    EXPECT_EQ(three.afters, 2);
    EXPECT_EQ(three.propagations, 2);
}

TEST(Observable, BehavesAlikeWhoeverListens) {
    const Ref<Owner> heard = create<Owner>();
    const Ref<Owner> subscribed = create<Owner>();
    const Ref<Owner> alone = create<Owner>();
    CountingListener all;
    CountingListener subscriber;
    all.listenTo(heard->value);
    subscribed->value.subscribe(&subscriber, &CountingListener::before, &CountingListener::after);
    std::mt19937 random(1);

    for (int step = 0; step < 20000; ++step) {
        const std::uint32_t number = random() % 4;
        const auto act = [number, kind = random() % 6](Observable<std::uint32_t>& value) -> std::uint32_t {
            switch (kind) {
                case 0:
                    return value.beginChange(number);
                case 1:
                    value.commitChange();
                    return 0;
                case 2:
                    value.finishChange();
                    return 0;
                case 3:
                    return value.set(number, Observable<std::uint32_t>::pulse);
                default:
                    return value.set(number);
            }
        };
        const std::uint32_t result = act(heard->value);
        for (Observable<std::uint32_t>* other : {&subscribed->value, &alone->value}) {
            ASSERT_EQ(act(*other), result) << "at step " << step;
            ASSERT_EQ(other->value(), heard->value.value()) << "at step " << step;
            ASSERT_EQ(other->pending(), heard->value.pending()) << "at step " << step;
        }
        ASSERT_EQ(subscriber.befores, all.befores) << "at step " << step;
        ASSERT_EQ(subscriber.afters, all.afters) << "at step " << step;
    }
    EXPECT_GT(all.afters, 1000);
}

TEST(Observable, BeforeFunctionsAreCalledWhoeverCameFirst) {
    const Ref<Owner> owner = create<Owner>();
    CountingListener afterOnly;
    CountingListener both;
    owner->value.subscribe(&afterOnly, nullptr, &CountingListener::after);
    owner->value.set(1);
    owner->value.subscribe(&both, &CountingListener::before, &CountingListener::after);

    owner->value.set(2);

    EXPECT_EQ(both.befores, 1);
    EXPECT_EQ(afterOnly.afters, 2);
}

}  // namespace
}  // namespace korva::framework
