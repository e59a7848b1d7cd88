// Values that follow from others: derived by hand and by `derive`.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "framework/active_object.h"
#include "framework/wiring.h"
#include "tests/support/diary_listener.h"
#include "tests/support/value_owner.h"

namespace korva::framework {
namespace {

using test::Diary;
using test::DiaryListener;
using Pair = test::PairOwner<std::uint32_t>;

// The second value is ten times the first.
void beginTenfold(void* context, ListenedTo&, ActiveObject&, const void*, void* pending, const void*,
                  Reason) {
    static_cast<Pair*>(context)->second.beginChange(10 * *static_cast<const std::uint32_t*>(pending));
}
void commitSecond(void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
    static_cast<Pair*>(context)->second.commitChange();
}
void finishSecond(void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
    static_cast<Pair*>(context)->second.finishChange();
}

class DerivedByHand : public testing::Test {
protected:
    void derive() {
        pair->first.addPropagator(pair.get(), &beginTenfold, Position::last, true);
        pair->first.subscribe(pair.get(), &commitSecond, &finishSecond, Position::first, true, true);
    }

    const Ref<Pair> pair = create<Pair>();
    Diary diary;
    DiaryListener source{diary, "source"};
    DiaryListener derived{diary, "derived"};
};

TEST_F(DerivedByHand, TheCallsAtOnceBringTheValueUpToDate) {
    pair->first.set(3);
    derived.subscribe(pair->second);

    derive();

    EXPECT_EQ(pair->second.value(), 30U);
    EXPECT_EQ(diary, (Diary{"derived before 0 to 30", "derived after 30 to 30"}));
}

TEST_F(DerivedByHand, ThePropagatorsCallAtOnceOnlyBeginsTheChange) {
    pair->first.set(3);

    pair->first.addPropagator(pair.get(), &beginTenfold, Position::last, true);

    EXPECT_EQ(pair->second.value(), 0U);
    EXPECT_EQ(pair->second.pending(), 30U);
}

TEST_F(DerivedByHand, ItChangesBeforeTheSubscribersOfItsSourceAreServed) {
    source.subscribe(pair->first);
    derive();
    derived.subscribe(pair->second);
    std::vector<std::uint32_t> seenBySource;
    source.onBefore = [&] { seenBySource.push_back(pair->second.value()); };
    source.onAfter = source.onBefore;

    pair->first.set(3);

    EXPECT_EQ(seenBySource, (std::vector<std::uint32_t>{30, 30}));
    EXPECT_EQ(diary, (Diary{"derived before 0 to 30", "source before 0 to 3", "derived after 30 to 30",
                            "source after 3 to 3"}));
}

TEST_F(DerivedByHand, AnEqualResultTellsNobody) {
    derive();
    derived.subscribe(pair->second);
    pair->first.set(3);
    diary.clear();
    source.onPropagate = [](std::uint32_t& pending) { pending = 3; };
    source.propagate(pair->first, Position::first);

    pair->first.set(4);

    EXPECT_EQ(pair->second.value(), 30U);
    EXPECT_EQ(diary, Diary{"source propagates 3 to 4"});
}

// From one root over two branches to a mix of both.
class Diamond final : public ObjectClass<Diamond, ActiveObject>, public Wiring<Diamond> {
public:
    Diamond() {
        derive(left, from(root), [](std::uint32_t number) { return number * 10; });
        derive(right, from(root), [](std::uint32_t number) { return number * 100; });
        derive(mix, from(left, right), [](std::uint32_t one, std::uint32_t other) { return one + other; });
    }

    Observable<std::uint32_t> root{*this};
    Observable<std::uint32_t> left{*this};
    Observable<std::uint32_t> right{*this};
    Observable<std::uint32_t> mix{*this};
};

TEST(DerivedValue, ADiamondNeverPublishesAMixOfOldAndNew) {
    const auto diamond = create<Diamond>();
    Diary diary;
    DiaryListener listener(diary, "mix");
    listener.subscribe(diamond->mix);

    diamond->root.set(1);
    diamond->root.set(2);

    EXPECT_EQ(diary, (Diary{"mix before 0 to 110", "mix after 110 to 110", "mix before 110 to 220",
                            "mix after 220 to 220"}));
}

TEST(DerivedValue, WhoeverHearsOfOnePartOfADiamondFindsAllOfItChanged) {
    const auto diamond = create<Diamond>();
    Diary diary;
    std::vector<std::uint32_t> seen;
    const auto look = [&] {
        seen.insert(seen.end(), {diamond->left.value(), diamond->right.value(), diamond->mix.value()});
    };
    DiaryListener atRoot(diary, "root");
    DiaryListener atMix(diary, "mix");
    atRoot.subscribe(diamond->root);
    atMix.subscribe(diamond->mix);
    atRoot.onBefore = look;
    atMix.onAfter = look;

    diamond->root.set(1);

    EXPECT_EQ(seen, (std::vector<std::uint32_t>{10, 100, 110, 10, 100, 110}));
    EXPECT_EQ(diary, (Diary{"mix before 0 to 110", "root before 0 to 1", "mix after 110 to 110",
                            "root after 1 to 1"}));
}

// A sum and what it is computed from.
class Adder final : public ObjectClass<Adder, ActiveObject>, public Wiring<Adder> {
public:
    explicit Adder(bool othersArePublished) {
        const auto add = [this](std::uint32_t first, std::uint32_t second) {
            ++computations;
            return first + second;
        };
        if (othersArePublished) {
            derive(sum, fromPublished(one, other), add);
        } else {
            derive(sum, from(one, other), add);
        }
        computations = 0;
    }

    Observable<std::uint32_t> one{*this};
    Observable<std::uint32_t> other{*this};
    Observable<std::uint32_t> sum{*this};
    int computations = 0;
};

TEST(DerivedValue, FollowsEachOfItsSources) {
    const auto adder = create<Adder>(false);

    adder->one.set(1);
    EXPECT_EQ(adder->sum.value(), 1U);
    adder->other.set(20);
    EXPECT_EQ(adder->sum.value(), 21U);
    adder->one.set(0);

    EXPECT_EQ(adder->sum.value(), 20U);
    EXPECT_EQ(adder->computations, 3);
}

TEST(DerivedValue, StartsWithWhatItsSourcesSay) {
    class Late final : public ObjectClass<Late, ActiveObject>, public Wiring<Late> {
    public:
        Late() {
            one.set(1);
            other.set(2);
            derive(sum, from(one, other), [](std::uint32_t a, std::uint32_t b) { return a + b; });
        }

        Observable<std::uint32_t> one{*this};
        Observable<std::uint32_t> other{*this};
        Observable<std::uint32_t> sum{*this};
    };

    EXPECT_EQ(create<Late>()->sum.value(), 3U);
}

TEST(DerivedValue, TwoSourcesThatChangeTogetherChangeItOnce) {
    const auto adder = create<Adder>(false);
    Diary diary;
    DiaryListener listener(diary, "sum");
    listener.subscribe(adder->sum);

    adder->one.beginChange(1);
    adder->other.beginChange(20);
    adder->one.commitChange();
    adder->other.commitChange();
    adder->one.finishChange();
    adder->other.finishChange();

    EXPECT_EQ(adder->sum.value(), 21U);
    EXPECT_EQ(diary, (Diary{"sum before 0 to 21", "sum after 21 to 21"}));
}

TEST(DerivedValue, FromCountsOthersWithWhatTheyAreAboutToBe) {
    const auto adder = create<Adder>(false);
    adder->other.beginChange(20);

    adder->one.set(1);

    EXPECT_EQ(adder->sum.value(), 21U);
}

TEST(DerivedValue, FromPublishedCountsOthersWithWhatIsPublished) {
    const auto adder = create<Adder>(true);
    adder->other.beginChange(20);

    adder->one.set(1);
    EXPECT_EQ(adder->sum.value(), 1U);
    adder->other.commitChange();
    adder->other.finishChange();
    adder->one.set(2);

    EXPECT_EQ(adder->sum.value(), 22U);
}

TEST(DerivedValue, FromPublishedCountsTheChangingOneWithWhatItIsAboutToBe) {
    const auto adder = create<Adder>(true);

    adder->one.set(1);
    adder->other.set(20);

    EXPECT_EQ(adder->sum.value(), 21U);
}

TEST(DerivedValue, AChangeThatASourceTakesBackLeavesIt) {
    const auto adder = create<Adder>(false);
    Diary diary;
    DiaryListener listener(diary, "sum");
    listener.subscribe(adder->sum);

    adder->one.beginChange(1);
    adder->one.beginChange(0);
    adder->one.commitChange();
    adder->one.finishChange();
    EXPECT_EQ(adder->sum.value(), 0U);
    EXPECT_EQ(diary, Diary{});
    adder->one.set(5);

    EXPECT_EQ(adder->sum.value(), 5U);
}

TEST(DerivedValue, AReplacedSourceIsFollowedToItsLastValue) {
    const auto adder = create<Adder>(false);
    Diary diary;
    DiaryListener replacer(diary, "source");
    DiaryListener listener(diary, "sum");
    replacer.propagate(adder->one);
    replacer.onPropagate = [&](std::uint32_t& pending) {
        if (pending == 1) {
            adder->one.beginChange(2);
        }
    };
    listener.subscribe(adder->sum);

    adder->one.set(1);

    EXPECT_EQ(adder->sum.value(), 2U);
    EXPECT_EQ(diary, (Diary{"source propagates 0 to 1", "source propagates 0 to 2", "sum before 0 to 2",
                            "sum after 2 to 2"}));
}

TEST(DerivedValue, AChainOfDerivationsChangesWhole) {
    class Chain final : public ObjectClass<Chain, ActiveObject>, public Wiring<Chain> {
    public:
        Chain() {
            const auto successor = [](std::uint32_t number) { return number + 1; };
            derive(second, from(first), successor);
            derive(third, from(second), successor);
            derive(fourth, from(third), successor);
        }

        Observable<std::uint32_t> first{*this};
        Observable<std::uint32_t> second{*this};
        Observable<std::uint32_t> third{*this};
        Observable<std::uint32_t> fourth{*this};
    };
    const auto chain = create<Chain>();
    EXPECT_EQ(chain->fourth.value(), 3U);
    Diary diary;
    DiaryListener head(diary, "head");
    DiaryListener end(diary, "end");
    head.subscribe(chain->first);
    end.subscribe(chain->fourth);

    chain->first.set(10);

    EXPECT_EQ(diary, (Diary{"end before 3 to 13", "head before 0 to 10", "end after 13 to 13",
                            "head after 10 to 10"}));
}

}  // namespace
}  // namespace korva::framework
