#include "framework/wiring.h"

#include <gtest/gtest.h>

#include <cstdint>
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

}  // namespace
}  // namespace korva::framework
