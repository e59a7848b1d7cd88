// The example of docs/framework.md: a lamp whose brightness follows from a switch and a dimmer, and a fan
// that runs while the lamp is hot.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "framework/active_object.h"
#include "framework/dispatcher.h"
#include "framework/wiring.h"

namespace korva::framework {
namespace {

class Lamp final : public ObjectClass<Lamp, ActiveObject>, public Wiring<Lamp> {
public:
    Lamp() {
        derive(brightness, from(isOn, dimmer), &Lamp::brightnessOf);
        derive(isHot, from(brightness), [](std::uint32_t percent) { return percent > 80; });
        pair(brightness, &Lamp::beforeBrightness, &Lamp::afterBrightness);
        cooling = watch(isHot).whileSet().then(fanAllowed).whileSet(&Lamp::startFan, &Lamp::stopFan);
    }

    Observable<bool> isOn{*this};
    Observable<std::uint32_t> dimmer{*this};
    Observable<std::uint32_t> brightness{*this};
    Observable<bool> isHot{*this};
    Observable<bool> fanAllowed{*this};
    std::vector<std::string> diary;

private:
    void onClose() override {
        cooling.drop();
        ActiveObject::onClose();
    }

    std::uint32_t brightnessOf(bool on, std::uint32_t percent) const { return on ? percent : 0; }
    void beforeBrightness(std::uint32_t before, std::uint32_t after) {
        diary.push_back(std::to_string(before) + " to " + std::to_string(after));
    }
    void afterBrightness(std::uint32_t now) { diary.push_back("now " + std::to_string(now)); }
    void startFan() { diary.push_back("fan on"); }
    void stopFan() { diary.push_back("fan off"); }

    NestedWatch cooling;
};

using Diary = std::vector<std::string>;

TEST(FrameworkExample, OneChangeRunsThroughTheWholeLamp) {
    const DispatcherUse worker = Dispatcher::start(RootType::of<Lamp>());
    Ref<Lamp> lamp;
    worker->runSynchronously([&] { lamp = create<Lamp>(); });

    lamp->fanAllowed.set(true);
    lamp->dimmer.set(90);
    EXPECT_EQ(lamp->brightness.read(), 0U);
    EXPECT_EQ(lamp->diary, Diary{});

    lamp->isOn.set(true);
    EXPECT_EQ(lamp->brightness.read(), 90U);
    EXPECT_EQ(lamp->diary, (Diary{"0 to 90", "fan on", "now 90"}));

    lamp->diary.clear();
    lamp->dimmer.set(40);
    EXPECT_EQ(lamp->diary, (Diary{"fan off", "90 to 40", "now 40"}));

    lamp->dimmer.set(100);
    lamp->diary.clear();
    lamp->close();
    lamp->runOnOwner([] {});
    lamp = nullptr;
}

}  // namespace
}  // namespace korva::framework
