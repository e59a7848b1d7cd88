#include "framework/ref.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "tests/support/active_counter.h"

namespace korva::framework {
namespace {

using test::ActiveCounter;
using test::LifeCounts;
using test::referencesTo;

TEST(Ref, IsNullWithoutAnObject) {
    const Ref<ActiveCounter> none;

    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(none.get(), nullptr);
    EXPECT_FALSE(none);
    EXPECT_EQ(Ref<ActiveCounter>::share(nullptr), nullptr);
}

TEST(Ref, AdoptTakesTheReferenceThatIsThere) {
    LifeCounts counts;
    Ref<ActiveCounter> created = create<ActiveCounter>(counts);
    ActiveCounter* const object = created.giveUp();
    {
        const auto adopted = Ref<ActiveCounter>::adopt(object);
        EXPECT_EQ(referencesTo(*object), 1U);
    }

    EXPECT_EQ(counts.ends, 1);
}

TEST(Ref, ShareAndCopiesCountOneEach) {
    LifeCounts counts;
    const Ref<ActiveCounter> created = create<ActiveCounter>(counts);
    {
        const auto shared = Ref<ActiveCounter>::share(created.get());
        const Ref<ActiveCounter> copy = shared;
        const Ref<ActiveObject> toBase = copy;
        EXPECT_EQ(referencesTo(*created), 4U);
    }

    EXPECT_EQ(referencesTo(*created), 1U);
    EXPECT_EQ(counts.ends, 0);
}

TEST(Ref, AMoveTakesTheReferenceAlong) {
    LifeCounts counts;
    Ref<ActiveCounter> created = create<ActiveCounter>(counts);

    Ref<ActiveCounter> moved = std::move(created);
    const Ref<ActiveObject> toBase = std::move(moved);

    EXPECT_EQ(created, nullptr);
    EXPECT_EQ(moved, nullptr);
    EXPECT_EQ(referencesTo(*toBase), 1U);
}

TEST(Ref, AssignmentDropsTheFormerObject) {
    LifeCounts former;
    LifeCounts latter;
    Ref<ActiveCounter> reference = create<ActiveCounter>(former);

    reference = create<ActiveCounter>(latter);

    EXPECT_EQ(former.ends, 1);
    EXPECT_EQ(latter.ends, 0);
    reference = nullptr;
    EXPECT_EQ(latter.ends, 1);
}

TEST(Ref, AssignmentToItselfKeepsTheObject) {
    LifeCounts counts;
    Ref<ActiveCounter> reference = create<ActiveCounter>(counts);
    const Ref<ActiveCounter>& same = reference;

    reference = same;

    EXPECT_EQ(counts.ends, 0);
    EXPECT_EQ(referencesTo(*reference), 1U);
}

TEST(Ref, TheNewReferenceIsInPlaceWhenTheOldOneGoes) {
    LifeCounts former;
    LifeCounts latter;
    Ref<ActiveCounter> reference = create<ActiveCounter>(former);
    const ActiveCounter* seen = nullptr;
    reference->atClose = [&](ActiveCounter&) { seen = reference.get(); };
    const Ref<ActiveCounter> next = create<ActiveCounter>(latter);

    reference = next;

    EXPECT_EQ(seen, next.get());
}

TEST(Ref, EqualityIsThatOfTheObject) {
    LifeCounts counts;
    const Ref<ActiveCounter> one = create<ActiveCounter>(counts);
    const Ref<ActiveCounter> other = create<ActiveCounter>(counts);

    EXPECT_EQ(one, Ref<ActiveCounter>(one));
    EXPECT_NE(one, other);
    EXPECT_NE(one, nullptr);
}

TEST(Held, TheFirstHolderIsTheOneThatNoHoldAnswers) {
    LifeCounts counts;
    const Ref<ActiveCounter> watched = create<ActiveCounter>(counts);
    auto first = Held<ActiveCounter>::first(watched);
    EXPECT_EQ(counts.closes, 0);

    first = nullptr;

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.ends, 0);
}

TEST(Held, AnObjectClosesWhenTheLastOfItsHoldersGoes) {
    LifeCounts counts;
    const Ref<ActiveCounter> watched = create<ActiveCounter>(counts);
    auto first = Held<ActiveCounter>::first(watched);
    Held<ActiveCounter> second = first;
    Held<ActiveCounter> third(watched);

    first = nullptr;
    third = nullptr;
    EXPECT_EQ(counts.closes, 0);
    second = nullptr;

    EXPECT_EQ(counts.closes, 1);
}

TEST(Held, ItsDropIsTheLastReleaseWhenNobodyElseRefers) {
    LifeCounts counts;
    auto first = Held<ActiveCounter>::first(create<ActiveCounter>(counts));

    first = nullptr;

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(counts.ends, 1);
}

TEST(Held, AMoveIsTheSameHolder) {
    LifeCounts counts;
    const Ref<ActiveCounter> watched = create<ActiveCounter>(counts);
    auto first = Held<ActiveCounter>::first(watched);

    Held<ActiveCounter> moved = std::move(first);
    Held<ActiveObject> toBase = std::move(moved);
    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(moved, nullptr);
    EXPECT_EQ(counts.closes, 0);
    toBase = nullptr;

    EXPECT_EQ(counts.closes, 1);
    EXPECT_EQ(referencesTo(*watched), 1U);
}

TEST(Held, ACopyToABaseIsAHolderOfItsOwn) {
    LifeCounts counts;
    const Ref<ActiveCounter> watched = create<ActiveCounter>(counts);
    auto first = Held<ActiveCounter>::first(watched);
    Held<ActiveObject> toBase = first;

    first = nullptr;
    EXPECT_EQ(counts.closes, 0);
    toBase = nullptr;

    EXPECT_EQ(counts.closes, 1);
}

TEST(Held, AssignmentTakesTheNewHoldBeforeItDropsTheOld) {
    LifeCounts counts;
    const Ref<ActiveCounter> watched = create<ActiveCounter>(counts);
    auto first = Held<ActiveCounter>::first(watched);
    const Held<ActiveCounter>& same = first;

    first = same;

    EXPECT_EQ(counts.closes, 0);
}

TEST(Held, NullHoldsNothing) {
    const Held<ActiveCounter> none;
    const Held<ActiveCounter> ofNull{Ref<ActiveCounter>()};
    const auto firstOfNull = Held<ActiveCounter>::first(nullptr);

    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(ofNull, none);
    EXPECT_FALSE(firstOfNull);
}

TEST(Held, GiveUpLeavesTheCloseToTheCaller) {
    LifeCounts counts;
    auto first = Held<ActiveCounter>::first(create<ActiveCounter>(counts));

    const Ref<ActiveCounter> given = first.giveUp();

    EXPECT_EQ(first, nullptr);
    EXPECT_EQ(counts.closes, 0);
    given->close();
    EXPECT_EQ(counts.closes, 1);
}

}  // namespace
}  // namespace korva::framework
