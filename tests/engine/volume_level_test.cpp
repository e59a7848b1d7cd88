#include "engine/volume_level.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "tests/engine/effect_test.h"

namespace korva::engine {
namespace {

using framework::create;
using framework::Ref;
using test::FakeVolume;
using test::Lines;

TEST(VolumeLevel, FullVolumeIs0Db) {
    EXPECT_EQ(volumeDb(1.0f), 0.0f);
}

TEST(VolumeLevel, HalfOfItIs6DbLess) {
    EXPECT_FLOAT_EQ(volumeDb(0.5f), -6.0206f);
    EXPECT_FLOAT_EQ(volumeDb(0.001f), -60.0f);
}

TEST(VolumeLevel, SilenceIsMinus130Db) {
    EXPECT_EQ(volumeDb(0.0f), -130.0f);
    EXPECT_EQ(volumeDb(-0.0f), -130.0f);
    EXPECT_EQ(volumeDb(1e-7f), -130.0f);
    EXPECT_EQ(volumeDb(std::numeric_limits<float>::denorm_min()), -130.0f);
}

TEST(VolumeLevel, WhatHasNoLogarithmIsSilence) {
    EXPECT_EQ(volumeDb(std::numeric_limits<float>::quiet_NaN()), -130.0f);
    EXPECT_EQ(volumeDb(-0.5f), -130.0f);
    EXPECT_EQ(volumeDb(-std::numeric_limits<float>::infinity()), -130.0f);
}

/// The volume of devices, as a module is told of it.
class VolumeTraffic : public test::EffectTest {
protected:
    VolumeTraffic() { rig.device->volume = volume; }

    [[nodiscard]] static std::string sent(float levelDb, int instance = 1) {
        return test::parameterText(instance, 4, 24, std::as_bytes(std::span(&levelDb, 1)));
    }
    /// The last of the calls of a start.
    [[nodiscard]] std::string lastOfStart() {
        rig.lock();
        const Lines calls = newCalls();
        return calls[calls.size() - test::lockCalls(1).size() - 1];
    }

    const Ref<FakeVolume> volume = create<FakeVolume>();
};

TEST_F(VolumeTraffic, IsReadAsTheEngineStarts) {
    begin();
    volume->scalar = 0.5f;
    EXPECT_EQ(rig.core().masterVolumeDb.read(), 0.0f);
    EXPECT_EQ(lastOfStart(), sent(volumeDb(0.5f)));
    EXPECT_EQ(rig.core().masterVolumeDb.read(), volumeDb(0.5f));
}

TEST_F(VolumeTraffic, OfSilenceIsMinus130Db) {
    volume->scalar = 0.0f;
    begin();
    EXPECT_EQ(lastOfStart(), sent(-130.0f));
}

TEST_F(VolumeTraffic, ThatIsNoNumberIsMinus130Db) {
    volume->scalar = std::numeric_limits<float>::quiet_NaN();
    begin();
    EXPECT_EQ(lastOfStart(), sent(-130.0f));
}

TEST_F(VolumeTraffic, BelowZeroIsMinus130Db) {
    volume->scalar = -1.0f;
    begin();
    EXPECT_EQ(lastOfStart(), sent(-130.0f));
}

TEST_F(VolumeTraffic, ThatCannotBeReadIs0Db) {
    volume->scalar = 0.25f;
    volume->scalarResult = published::unspecifiedFailure;
    begin();
    rig.core().masterVolumeDb.set(-20.0f);
    EXPECT_EQ(lastOfStart(), sent(0.0f));
}

TEST_F(VolumeTraffic, TellsEachChangeOnce) {
    beginStream();
    rig.core().masterVolumeDb.set(-12.5f);
    rig.core().masterVolumeDb.set(-12.5f);
    rig.core().masterVolumeDb.set(-3.0f);
    EXPECT_EQ(newCalls(), (Lines{sent(-12.5f), sent(-3.0f)}));
}

TEST_F(VolumeTraffic, IsReadAnewAtTheNextStart) {
    beginStream();
    rig.core().masterVolumeDb.set(-12.5f);
    rig.unlock();
    static_cast<void>(newCalls());
    rig.lock({.rate = 96000}, {.rate = 96000});
    const Lines calls = newCalls();
    EXPECT_EQ(std::ranges::count(calls, sent(0.0f)), 1);
    EXPECT_EQ(std::ranges::count(calls, sent(-12.5f)), 0);
}

TEST_F(VolumeTraffic, OfADeviceThatIsNotActiveIsNotSent) {
    rig.device->state = published::deviceStateUnplugged;
    begin();
    EXPECT_EQ(lastOfStart(), "SetParameter #1 -1:-18 00");
    rig.core().masterVolumeDb.set(-12.5f);
    EXPECT_EQ(newCalls(), Lines{});
}

TEST_F(VolumeTraffic, OfTheNextDeviceIsSentThoughItIsTheSame) {
    beginStream();
    rig.core().endpointVolume.set(create<FakeVolume>());
    EXPECT_EQ(newCalls(), Lines{sent(0.0f)});
}

TEST_F(VolumeTraffic, OfTheNextDeviceTakesThePlaceOfTheLast) {
    beginStream();
    const Ref<FakeVolume> next = create<FakeVolume>();
    next->scalar = 0.5f;
    rig.core().endpointVolume.set(next);
    EXPECT_EQ(newCalls(), Lines{sent(volumeDb(0.5f))});
}

TEST_F(VolumeTraffic, EndsWithTheDeviceAndBeginsWithTheNext) {
    beginStream();
    rig.core().endpointVolume.set(nullptr);
    rig.core().masterVolumeDb.set(-40.0f);
    EXPECT_EQ(newCalls(), Lines{});
    rig.core().endpointVolume.set(volume);
    EXPECT_EQ(newCalls(), Lines{sent(0.0f)});
}

}  // namespace
}  // namespace korva::engine
