#include "framework/wiring.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "framework/active_object.h"
#include "tests/support/value_owner.h"

namespace korva::framework {
namespace {

using Lines = std::vector<std::string>;
using Source = test::PairOwner<std::uint32_t>;

// Wires its own values and those of another object.
class Mixer final : public ObjectClass<Mixer, ActiveObject>, public Wiring<Mixer> {
public:
    explicit Mixer(Ref<Source> anotherObject) : source(std::move(anotherObject)) {
        derive(level, from(source->first, own), &Mixer::levelOf);
        derive(isLoud, from(level), [](std::uint32_t now) { return now > 10; });
        pair(level, &Mixer::before, &Mixer::after);
        pair(
            isLoud, [this](bool, bool now) { lines.push_back(now ? "gets loud" : "gets quiet"); },
            [this](bool now) { lines.push_back(now ? "is loud" : "is quiet"); });
    }

    using Wiring::cutWires;

    const Ref<Source> source;
    Observable<std::uint32_t> own{*this};
    Observable<std::uint32_t> level{*this};
    Observable<bool> isLoud{*this};
    Lines lines;

private:
    void onClose() override {
        cutWires();
        ActiveObject::onClose();
    }

    [[nodiscard]] std::uint32_t levelOf(std::uint32_t theirs, std::uint32_t ours) const {
        return theirs + ours;
    }
    void before(std::uint32_t former, std::uint32_t latter) {
        lines.push_back("from " + std::to_string(former) + " to " + std::to_string(latter));
    }
    void after(std::uint32_t now) { lines.push_back("now " + std::to_string(now)); }
};

TEST(Wiring, DerivesByMethodsAndByOtherCallables) {
    const auto mixer = create<Mixer>(create<Source>());

    mixer->source->first.set(8);
    mixer->own.set(4);

    EXPECT_EQ(mixer->level.value(), 12U);
    EXPECT_TRUE(mixer->isLoud.value());
}

TEST(Wiring, PairsAreCalledAroundEachChange) {
    const auto mixer = create<Mixer>(create<Source>());

    mixer->own.set(4);
    EXPECT_EQ(mixer->lines, (Lines{"from 0 to 4", "now 4"}));
    mixer->lines.clear();
    mixer->own.set(14);

    EXPECT_EQ(mixer->lines, (Lines{"gets loud", "from 4 to 14", "is loud", "now 14"}));
}

TEST(Wiring, APairIsNotCalledAtOnce) {
    EXPECT_EQ(create<Mixer>(create<Source>())->lines, Lines{});
}

TEST(Wiring, CutWiresFollowNothing) {
    const auto mixer = create<Mixer>(create<Source>());
    mixer->own.set(4);
    mixer->lines.clear();

    mixer->cutWires();
    mixer->own.set(20);
    mixer->source->first.set(20);
    mixer->level.set(30);

    EXPECT_EQ(mixer->level.value(), 30U);
    EXPECT_FALSE(mixer->isLoud.value());
    EXPECT_EQ(mixer->lines, Lines{});
}

TEST(Wiring, CutWiresMayBeCutAgain) {
    const auto mixer = create<Mixer>(create<Source>());

    mixer->cutWires();
    mixer->cutWires();
    mixer->own.set(1);

    EXPECT_EQ(mixer->level.value(), 0U);
}

TEST(Wiring, AnotherObjectIsUsedOnAfterTheWiresToItAreCut) {
    const Ref<Source> source = create<Source>();
    auto mixer = create<Mixer>(source);
    source->first.set(1);

    mixer = nullptr;
    source->first.set(2);

    EXPECT_EQ(source->first.value(), 2U);
}

TEST(Wiring, CutLeavesTheListenersOfOthers) {
    const Ref<Source> source = create<Source>();
    const auto cut = create<Mixer>(source);
    const auto kept = create<Mixer>(source);

    cut->cutWires();
    source->first.set(3);

    EXPECT_EQ(cut->level.value(), 0U);
    EXPECT_EQ(kept->level.value(), 3U);
}

/// A chain of values in which each counts how often it is computed. `product` follows from all that is before
/// it, as wired from the nearest on.
class Chain final : public ObjectClass<Chain, ActiveObject>, public Wiring<Chain> {
public:
    Chain() {
        derive(half, from(source), [this](std::uint32_t whole) {
            ++halves;
            return whole / 2;
        });
        derive(tenth, from(source, half), [this](std::uint32_t whole, std::uint32_t) {
            ++tenths;
            return whole / 10;
        });
        derive(product, from(source, half, tenth, factor),
               [this](std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
                   ++products;
                   inputs.push_back({a, b, c, d});
                   return a * b * c * d;
               });
        halves = tenths = products = 0;
        inputs.clear();
    }

    Observable<std::uint32_t> source{*this};
    Observable<std::uint32_t> factor{*this};
    Observable<std::uint32_t> half{*this};
    Observable<std::uint32_t> tenth{*this};
    Observable<std::uint32_t> product{*this};
    int halves = 0;
    int tenths = 0;
    int products = 0;
    std::vector<std::vector<std::uint32_t>> inputs;
};

TEST(WiringOnce, AValueOfSourcesThatFollowFromEachOtherIsComputedOnceAChange) {
    const auto chain = create<Chain>();

    chain->source.set(40);

    EXPECT_EQ(chain->halves, 1);
    EXPECT_EQ(chain->tenths, 1);
    EXPECT_EQ(chain->products, 1);
    EXPECT_EQ(chain->inputs, (std::vector<std::vector<std::uint32_t>>{{40, 20, 4, 0}}));
}

TEST(WiringOnce, AValueWhoseSourcesStayIsNotComputed) {
    const auto chain = create<Chain>();
    chain->source.set(40);

    chain->factor.set(2);

    EXPECT_EQ(chain->halves, 1);
    EXPECT_EQ(chain->tenths, 1);
    EXPECT_EQ(chain->products, 2);
    EXPECT_EQ(chain->product.value(), 6400U);
}

TEST(WiringOnce, ASourceThatComesOutEqualLeavesTheOthersToTell) {
    const auto chain = create<Chain>();
    chain->source.set(40);
    chain->inputs.clear();

    chain->source.set(41);

    EXPECT_EQ(chain->inputs, (std::vector<std::vector<std::uint32_t>>{{41, 20, 4, 0}}));
}

TEST(WiringOnce, AValueThatCameBackIsComputedAgain) {
    const auto chain = create<Chain>();

    chain->source.set(40);
    chain->source.set(0);
    chain->source.set(40);

    EXPECT_EQ(chain->products, 3);
    EXPECT_EQ(chain->half.value(), 20U);
}

TEST(WiringOnce, WhatASourceWasSetToByOthersCounts) {
    const auto chain = create<Chain>();
    chain->source.set(40);
    chain->inputs.clear();

    chain->half.set(7);

    EXPECT_EQ(chain->inputs, (std::vector<std::vector<std::uint32_t>>{{40, 7, 4, 0}}));
}

TEST(WiringOnce, ASourceThatIsNeverEqualIsComputedEachTime) {
    class Level final : public ObjectClass<Level, ActiveObject>, public Wiring<Level> {
    public:
        Level() {
            derive(isLoud, from(level, other), [this](float now, std::uint32_t) {
                ++computed;
                return now > 1.0f;
            });
        }
        Observable<float> level{*this};
        Observable<std::uint32_t> other{*this};
        Observable<bool> isLoud{*this};
        int computed = 0;
    };
    const auto value = create<Level>();
    value->level.set(std::numeric_limits<float>::quiet_NaN());
    value->computed = 0;

    value->other.set(1);
    value->level.set(std::numeric_limits<float>::quiet_NaN());

    EXPECT_EQ(value->computed, 2);
}

}  // namespace
}  // namespace korva::framework
