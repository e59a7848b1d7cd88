// What listeners do in the middle of an engine's start.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/effect_rig.h"

namespace korva::engine {
namespace {

using framework::create;
using framework::Ref;
using test::EffectRig;

using Lines = std::vector<std::string>;

/// Does something from the first call of a listener of the value.
template <class T>
class Interloper {
public:
    Interloper(framework::Observable<T>& value, std::function<void()> act) : action(std::move(act)) {
        value.subscribe(this, nullptr, &run);
    }

private:
    static void run(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                    const void*, framework::Reason) {
        std::exchange(static_cast<Interloper*>(context)->action, [] {})();
    }

    std::function<void()> action;
};

/// Starts an engine by a stream, or by a permission while there is a rate, and interferes.
class EffectCoreInAStart : public testing::TestWithParam<bool> {
protected:
    EffectCoreInAStart() {
        const Ref<test::FakeVolume> volume = create<test::FakeVolume>();
        volume->scalar = 0.5f;
        rig.device->volume = volume;
        rig.install({});
        if (!startsByAStream()) {
            rig.core().engineAllowed.set(false);
        }
        rig.begin();
        if (!startsByAStream()) {
            rig.lock();
        }
        static_cast<void>(rig.newLifeCalls());
    }

    [[nodiscard]] static bool startsByAStream() { return GetParam(); }
    void start() {
        if (startsByAStream()) {
            rig.lock();
        } else {
            rig.core().engineAllowed.set(true);
        }
    }
    /// Starts, and does that as soon as the value changes. The calls that come of it.
    template <class T>
    Lines startAnd(framework::Observable<T> EffectCore::*value, const std::function<void()>& act) {
        std::optional<Interloper<T>> interloper;
        rig.on([&] { interloper.emplace(rig.core().*value, act); });
        start();
        rig.settle();
        Lines calls = rig.newLifeCalls();
        std::erase_if(calls, [](const std::string& call) {
            return call.starts_with("Load") || call.starts_with("Create");
        });
        return calls;
    }
    void expectSoundToPass() {
        EXPECT_EQ(rig.play(std::vector<float>(96, 0.5f)), std::vector<float>(96, 0.5f));
    }

    EffectRig rig;
};

INSTANTIATE_TEST_SUITE_P(Starts, EffectCoreInAStart, testing::Bool(), [](const auto& way) {
    return std::string(way.param ? "ByAStream" : "ByAPermission");
});

TEST_P(EffectCoreInAStart, ACloseByAListenerStopsAndFreesTheEngine) {
    EXPECT_EQ(
        startAnd(&EffectCore::presetLoadCount, [&] { rig.core().close(); }),
        (Lines{"Initialize TANMER64 1", "Uninitialize TANMER64 1", "Free TANMER64 1", "Unload TANMER64"}));
    expectSoundToPass();
    rig.close();
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
}

TEST_P(EffectCoreInAStart, ACloseByAListenerOfTheVolumeStopsAndFreesTheEngine) {
    EXPECT_EQ(
        startAnd(&EffectCore::masterVolumeDb, [&] { rig.core().close(); }),
        (Lines{"Initialize TANMER64 1", "Uninitialize TANMER64 1", "Free TANMER64 1", "Unload TANMER64"}));
    expectSoundToPass();
    rig.close();
    EXPECT_EQ(rig.newLifeCalls(), Lines{});
}

TEST_P(EffectCoreInAStart, AListenerThatRaisesLeavesAnEngineThatIsStoppedAtTheClose) {
    std::optional<Interloper<std::uint32_t>> interloper;
    rig.on([&] { interloper.emplace(rig.core().presetLoadCount, [] { throw std::bad_alloc(); }); });
    EXPECT_THROW(start(), std::bad_alloc);
    rig.close();
    const Lines calls = rig.newLifeCalls();
    EXPECT_EQ(std::ranges::count(calls, "Uninitialize TANMER64 1"), 1);
    EXPECT_EQ(std::ranges::count(calls, "Free TANMER64 1"), 1);
}

TEST_P(EffectCoreInAStart, AListenerThatSelectsAnotherEngineHasThatOneStarted) {
    const Lines calls = startAnd(&EffectCore::presetLoadCount, [&] { rig.core().presetVersion.set(2); });
    EXPECT_EQ(calls, (Lines{"Initialize TANMER64 1", "Uninitialize TANMER64 1", "Initialize TANMER64 2",
                            "Free TANMER64 1"}))
        << "the start that was left holds its engine until it ends";
    EXPECT_EQ(rig.play(std::vector<float>(96, 0.5f)), std::vector<float>(96, 0.25f));
}

}  // namespace
}  // namespace korva::engine
