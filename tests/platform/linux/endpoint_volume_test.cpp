#include <cmath>
#include <limits>

#include "tests/platform/linux/audio_devices_test.h"

namespace korva::platform {
namespace {

using test::SeededEndpoint;

class EndpointVolume : public AudioDevicesTest {
protected:
    [[nodiscard]] float scalar() const {
        float level = -1.0F;
        EXPECT_EQ(volume->GetMasterVolumeLevelScalar(&level), published::ok);
        return level;
    }
    [[nodiscard]] float levelDb() const {
        float level = 1.0F;
        EXPECT_EQ(volume->GetMasterVolumeLevel(&level), published::ok);
        return level;
    }

    SeededEndpoint endpoint;
    HeldObject<IMMDevice> device = deviceOf(endpoint);
    HeldObject<IAudioEndpointVolume> volume = volumeOf(*device);
};

TEST_F(EndpointVolume, IsWhatTheRegistrySaysNow) {
    EXPECT_EQ(scalar(), 1.0F);
    for (const float stored : {0.25F, 0.0F, 1.0F}) {
        endpoint.setVolume(stored);
        EXPECT_EQ(scalar(), stored);
    }
}

TEST_F(EndpointVolume, WhatIsSetIsThereForOthersToTheBit) {
    EXPECT_EQ(volume->SetMasterVolumeLevelScalar(0.1F, nullptr), published::ok);
    EXPECT_EQ(scalar(), 0.1F);
    const auto other = volumeOf(*device);
    float level = 0.0F;
    EXPECT_EQ(other->GetMasterVolumeLevelScalar(&level), published::ok);
    EXPECT_EQ(level, 0.1F);
    RegistryValue value;
    ASSERT_EQ(endpoint.key().readValue("MasterVolume", value), 0);
    EXPECT_EQ(value.type, registry_type::dword);
}

TEST_F(EndpointVolume, NumbersThatAreNoVolumeAreRefused) {
    EXPECT_EQ(volume->SetMasterVolumeLevelScalar(0.5F, nullptr), published::ok);
    for (const float wrong : {-0.01F, 1.01F, std::nanf(""), std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(volume->SetMasterVolumeLevelScalar(wrong, nullptr), published::invalidArgument) << wrong;
        EXPECT_EQ(volume->SetChannelVolumeLevelScalar(0, wrong, nullptr), published::invalidArgument);
    }
    for (const float wrong : {-96.5F, 0.5F, std::nanf(""), -std::numeric_limits<float>::infinity()}) {
        EXPECT_EQ(volume->SetMasterVolumeLevel(wrong, nullptr), published::invalidArgument) << wrong;
        EXPECT_EQ(volume->SetChannelVolumeLevel(0, wrong, nullptr), published::invalidArgument);
    }
    EXPECT_EQ(scalar(), 0.5F);
}

TEST_F(EndpointVolume, LevelsAreTwentyTimesTheLogarithm) {
    endpoint.setVolume(0.1F);
    EXPECT_NEAR(levelDb(), -20.0F, 1e-4F);
    endpoint.setVolume(1.0F);
    EXPECT_EQ(levelDb(), 0.0F);
    EXPECT_EQ(volume->SetMasterVolumeLevel(-40.0F, nullptr), published::ok);
    EXPECT_NEAR(scalar(), 0.01F, 1e-7F);
    EXPECT_NEAR(levelDb(), -40.0F, 1e-4F);
    EXPECT_EQ(volume->SetMasterVolumeLevel(0.0F, nullptr), published::ok);
    EXPECT_EQ(scalar(), 1.0F);
}

TEST_F(EndpointVolume, SilenceIsAtTheLowestLevel) {
    float lowest = 0.0F;
    float highest = 1.0F;
    float step = 0.0F;
    EXPECT_EQ(volume->GetVolumeRange(&lowest, &highest, &step), published::ok);
    EXPECT_EQ(lowest, -96.0F);
    EXPECT_EQ(highest, 0.0F);
    EXPECT_EQ(step, 1.0F);
    for (const float quiet : {0.0F, 1e-30F, std::numeric_limits<float>::denorm_min()}) {
        endpoint.setVolume(quiet);
        EXPECT_EQ(levelDb(), lowest) << quiet;
    }
    EXPECT_EQ(volume->SetMasterVolumeLevel(lowest, nullptr), published::ok);
    EXPECT_NEAR(levelDb(), lowest, 1e-4F);
}

TEST_F(EndpointVolume, TheOneChannelIsTheMaster) {
    UINT count = 0;
    EXPECT_EQ(volume->GetChannelCount(&count), published::ok);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(volume->SetChannelVolumeLevelScalar(0, 0.5F, nullptr), published::ok);
    EXPECT_EQ(scalar(), 0.5F);
    EXPECT_EQ(volume->SetChannelVolumeLevel(0, -20.0F, nullptr), published::ok);
    EXPECT_NEAR(scalar(), 0.1F, 1e-6F);
    float level = 0.0F;
    EXPECT_EQ(volume->GetChannelVolumeLevelScalar(0, &level), published::ok);
    EXPECT_EQ(level, scalar());
    EXPECT_EQ(volume->GetChannelVolumeLevel(0, &level), published::ok);
    EXPECT_EQ(level, levelDb());
    EXPECT_EQ(volume->GetChannelVolumeLevelScalar(1, &level), published::invalidArgument);
    EXPECT_EQ(volume->GetChannelVolumeLevel(1, &level), published::invalidArgument);
    EXPECT_EQ(volume->SetChannelVolumeLevelScalar(1, 0.5F, nullptr), published::invalidArgument);
    EXPECT_EQ(volume->SetChannelVolumeLevel(1, -3.0F, nullptr), published::invalidArgument);
}

TEST_F(EndpointVolume, MuteAndVolumeLeaveEachOtherAlone) {
    BOOL muted = 7;
    EXPECT_EQ(volume->GetMute(&muted), published::ok);
    EXPECT_EQ(muted, 0);
    EXPECT_EQ(volume->SetMasterVolumeLevelScalar(0.5F, nullptr), published::ok);
    EXPECT_EQ(volume->SetMute(5, nullptr), published::ok);
    EXPECT_EQ(volume->SetMute(1, nullptr), HRESULT{1});
    EXPECT_EQ(volume->GetMute(&muted), published::ok);
    EXPECT_EQ(muted, 1);
    EXPECT_EQ(scalar(), 0.5F);
    EXPECT_EQ(volume->SetMasterVolumeLevelScalar(0.25F, nullptr), published::ok);
    EXPECT_EQ(volume->GetMute(&muted), published::ok);
    EXPECT_EQ(muted, 1);
    EXPECT_EQ(volume->SetMute(0, nullptr), published::ok);
    EXPECT_EQ(volume->SetMute(0, nullptr), HRESULT{1});
}

TEST_F(EndpointVolume, StepsGoFromSilenceToTheLoudest) {
    UINT step = 0;
    UINT count = 0;
    EXPECT_EQ(volume->GetVolumeStepInfo(&step, &count), published::ok);
    EXPECT_EQ(step, 50U);
    EXPECT_EQ(count, 51U);
    EXPECT_EQ(volume->VolumeStepUp(nullptr), published::ok);
    EXPECT_EQ(scalar(), 1.0F);
    for (UINT expected = 50; expected-- > 0;) {
        EXPECT_EQ(volume->VolumeStepDown(nullptr), published::ok);
        EXPECT_EQ(volume->GetVolumeStepInfo(&step, &count), published::ok);
        EXPECT_EQ(step, expected);
    }
    EXPECT_EQ(volume->VolumeStepDown(nullptr), published::ok);
    EXPECT_EQ(scalar(), 0.0F);
    EXPECT_EQ(volume->VolumeStepUp(nullptr), published::ok);
    EXPECT_EQ(scalar(), 0.02F);
}

TEST_F(EndpointVolume, ThereIsNoHardware) {
    DWORD mask = 7;
    EXPECT_EQ(volume->QueryHardwareSupport(&mask), published::ok);
    EXPECT_EQ(mask, 0U);
}

TEST_F(EndpointVolume, NullPointersAreRefused) {
    float level = 0.0F;
    UINT number = 0;
    EXPECT_EQ(volume->GetMasterVolumeLevel(nullptr), published::nullPointer);
    EXPECT_EQ(volume->GetMasterVolumeLevelScalar(nullptr), published::nullPointer);
    EXPECT_EQ(volume->GetChannelVolumeLevel(0, nullptr), published::nullPointer);
    EXPECT_EQ(volume->GetChannelVolumeLevelScalar(0, nullptr), published::nullPointer);
    EXPECT_EQ(volume->GetChannelCount(nullptr), published::nullPointer);
    EXPECT_EQ(volume->GetMute(nullptr), published::nullPointer);
    EXPECT_EQ(volume->GetVolumeStepInfo(&number, nullptr), published::nullPointer);
    EXPECT_EQ(volume->GetVolumeRange(&level, &level, nullptr), published::nullPointer);
    EXPECT_EQ(volume->QueryHardwareSupport(nullptr), published::nullPointer);
    EXPECT_EQ(volume->RegisterControlChangeNotify(nullptr), published::nullPointer);
    EXPECT_EQ(volume->UnregisterControlChangeNotify(nullptr), published::nullPointer);
}

TEST_F(EndpointVolume, StaysWhenTheEndpointIsNoLongerActive) {
    EXPECT_EQ(volume->SetMasterVolumeLevelScalar(0.5F, nullptr), published::ok);
    endpoint.setNumber("DeviceState", 8);
    EXPECT_EQ(scalar(), 0.5F);
    EXPECT_EQ(volume->SetMasterVolumeLevelScalar(0.25F, nullptr), published::ok);
}

TEST_F(EndpointVolume, EndsWithTheEndpoint) {
    endpoint.remove();
    float level = 7.0F;
    BOOL muted = 7;
    EXPECT_EQ(volume->GetMasterVolumeLevelScalar(&level), published::deviceInvalidated);
    EXPECT_EQ(volume->GetMasterVolumeLevel(&level), published::deviceInvalidated);
    EXPECT_EQ(level, 7.0F);
    EXPECT_EQ(volume->GetMute(&muted), published::deviceInvalidated);
    EXPECT_EQ(volume->SetMute(1, nullptr), published::deviceInvalidated);
    EXPECT_EQ(volume->SetMasterVolumeLevelScalar(0.5F, nullptr), published::deviceInvalidated);
    EXPECT_EQ(volume->VolumeStepDown(nullptr), published::deviceInvalidated);
}

}  // namespace
}  // namespace korva::platform
