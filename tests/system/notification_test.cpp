// What the system tells an object, by what its module comes to know of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "tests/support/call_text.h"
#include "tests/support/wait_until.h"
#include "tests/system/class_test.h"
#include "tests/system/support/hosted_effect.h"

namespace korva::test {
namespace {

using published::APO_NOTIFICATION;
using published::APO_NOTIFICATION_DESCRIPTOR;
using Lines = std::vector<std::string>;

std::string inCapitals(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::toupper(letter)); });
    return text;
}

APO_NOTIFICATION notificationOf(std::uint32_t type) {
    APO_NOTIFICATION notification{};
    notification.type = static_cast<published::APO_NOTIFICATION_TYPE>(type);
    return notification;
}

class Notification : public testing::TestWithParam<ClassFacts> {
protected:
    Notification() {
        effect.install(GetParam());
        EXPECT_EQ(effect.initialize(object), result::ok);
        EXPECT_EQ(object.lock(floats(2)), result::ok);
        static_cast<void>(effect.newCalls());
    }

    void tell(APO_NOTIFICATION notification) { object.notifications->HandleNotification(&notification); }
    void tellVolume(IMMDevice* endpoint, float scalar) {
        AUDIO_VOLUME_NOTIFICATION_DATA data{};
        data.fMasterVolume = scalar;
        APO_NOTIFICATION notification = notificationOf(1);
        notification.audioEndpointVolumeChange = {endpoint, &data};
        tell(notification);
    }
    void tellDisabled(IMMDevice* endpoint, std::uint32_t number) {
        effect.effectsProperties.value.vt = VT_UI4;
        effect.effectsProperties.value.ulVal = number;
        APO_NOTIFICATION notification = notificationOf(2);
        notification.audioEndpointPropertyChange = {
            endpoint, &effect.effectsProperties, {disableEffectsFormat, 5}};
        tell(notification);
    }
    void tellProperty(IMMDevice* endpoint, REFPROPERTYKEY key, const GUID& context = effectsContext) {
        APO_NOTIFICATION notification = notificationOf(3);
        notification.audioSystemEffectsPropertyChange = {
            endpoint, context, published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_USER, nullptr, key};
        tell(notification);
    }
    [[nodiscard]] static std::string volumeLine(float scalar) {
        const float level = std::max(-130.0f, 20.0f * std::log10(scalar));
        return parameterText(1, 4, 24, std::as_bytes(std::span(&level, 1)));
    }
    /// Waits for a call that the object's thread makes by itself.
    [[nodiscard]] bool isToldSoon(const std::string& line) {
        return waitUntil([&] {
            const Lines calls = effect.calls();
            return std::ranges::find(calls, line) != calls.end();
        });
    }

    HostedEffect effect;
    OwnDevice foreign{"{0.0.0.00000000}.{another}"};
    OwnDevice inOtherCase{inCapitals(effect.endpoint.id())};
    HostedObject object{effect.library, GetParam()};
};

TEST_P(Notification, OfAVolumeReachesTheModule) {
    tellVolume(&effect.device, 0.5f);
    tellVolume(&inOtherCase, 0.1f);
    tellVolume(&effect.device, 0.0f);
    EXPECT_EQ(effect.newCalls(), (Lines{volumeLine(0.5f), volumeLine(0.1f), volumeLine(0.0f)}));
}

TEST_P(Notification, OfAVolumeThatIsNotNewReachesNobody) {
    tellVolume(&effect.device, 0.5f);
    static_cast<void>(effect.newCalls());
    tellVolume(&effect.device, 0.5f);
    EXPECT_EQ(effect.newCalls(), Lines{});
}

TEST_P(Notification, OfAnotherEndpointReachesNobody) {
    tellVolume(&foreign, 0.5f);
    tellVolume(nullptr, 0.5f);
    tellDisabled(&foreign, 1);
    tellDisabled(nullptr, 1);
    tellProperty(&foreign, HostedEffect::presetKey(0));
    EXPECT_EQ(object.apo->Reset(), result::ok);
    tellDisabled(&effect.device, 1);
    EXPECT_TRUE(isToldSoon("SetParameter #1 -1:-18 01"));
    EXPECT_EQ(effect.newCalls(), Lines{"SetParameter #1 -1:-18 01"});
}

TEST_P(Notification, OfDisabledEffectsReachesTheModuleAndBack) {
    tellDisabled(&effect.device, 1);
    EXPECT_TRUE(isToldSoon("SetParameter #1 -1:-18 01"));
    static_cast<void>(effect.newCalls());
    tellDisabled(&inOtherCase, 0);
    EXPECT_TRUE(waitUntil([&] { return effect.newCalls() == Lines{"SetParameter #1 -1:-18 00"}; }));
}

TEST_P(Notification, OfAPresetMakesTheModuleGetIt) {
    // No sizes of its own, and then the bytes of all parameters.
    std::vector<std::byte> blob(4096, std::byte{0x5A});
    std::ranges::fill(std::span(blob).first(4), std::byte{0});
    effect.writePreset(0, blob);
    tellProperty(&effect.device, HostedEffect::presetKey(0));
    EXPECT_TRUE(waitUntil([&] {
        return std::ranges::any_of(effect.calls(), [](const std::string& line) {
            return line.starts_with("SetParameter #1 ") && line.ends_with("5a5a5a5a");
        });
    }));
}

TEST_P(Notification, OfNoPresetsKeyChangesNothing) {
    tellProperty(&effect.device, HostedEffect::presetKey(0xFFFF));
    tellProperty(&effect.device, {iid::nobodys, 3000});
    tellProperty(&effect.device, HostedEffect::presetKey(0), iid::nobodys);
    tellProperty(&effect.device, PROPERTYKEY{});
    EXPECT_EQ(object.apo->Reset(), result::ok);
    tellDisabled(&effect.device, 1);
    EXPECT_TRUE(isToldSoon("SetParameter #1 -1:-18 01"));
    EXPECT_EQ(effect.newCalls(), Lines{"SetParameter #1 -1:-18 01"});
}

TEST_P(Notification, OfAnyOtherTypeIsIgnored) {
    for (const std::uint32_t type : {0U, 4U, 5U, 6U, 7U, 8U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        APO_NOTIFICATION notification = notificationOf(type);
        // What such a record holds is nothing that this object knows.
        std::memset(reinterpret_cast<BYTE*>(&notification) + 8, 0xFF, sizeof(notification) - 8);
        object.notifications->HandleNotification(&notification);
    }
    EXPECT_EQ(effect.newCalls(), Lines{});
}

TEST_P(Notification, MayBeMissingOrHoldNothing) {
    object.notifications->HandleNotification(nullptr);
    for (std::uint32_t type = 0; type < 9; ++type) {
        tell(notificationOf(type));
    }
    APO_NOTIFICATION volumeless = notificationOf(1);
    volumeless.audioEndpointVolumeChange = {&effect.device, nullptr};
    tell(volumeless);
    EXPECT_EQ(effect.newCalls(), Lines{});
    APO_NOTIFICATION storeless = notificationOf(2);
    storeless.audioEndpointPropertyChange = {&effect.device, nullptr, {disableEffectsFormat, 5}};
    tell(storeless);
    EXPECT_EQ(object.play(std::vector<float>{1, 1}, 2, 2), (std::vector<float>{0.5f, 0.5f}));
}

TEST_P(Notification, OfAnEndpointThatFailsToTellReachesNobody) {
    foreign.givesId = false;
    tellVolume(&foreign, 0.5f);
    foreign.told = result::deviceGone;
    tellVolume(&foreign, 0.5f);
    EXPECT_EQ(effect.newCalls(), Lines{});
}

TEST_P(Notification, IsTakenBeforeAnyInitialisation) {
    HostedObject early(effect.library, GetParam());
    APO_NOTIFICATION notification = notificationOf(1);
    AUDIO_VOLUME_NOTIFICATION_DATA data{};
    notification.audioEndpointVolumeChange = {&effect.device, &data};
    early.notifications->HandleNotification(&notification);
    EXPECT_EQ(early.lock(floats(2)), result::ok);
}

TEST_P(Notification, IsNeverAskedFor) {
    for (int round = 0; round < 2; ++round) {
        auto* descriptors = reinterpret_cast<APO_NOTIFICATION_DESCRIPTOR*>(this);
        DWORD count = 99;
        EXPECT_EQ(object.notifications->GetApoNotificationRegistrationInfo(&descriptors, &count), result::ok);
        EXPECT_EQ(descriptors, nullptr);
        EXPECT_EQ(count, 0U);
    }
    DWORD count = 99;
    APO_NOTIFICATION_DESCRIPTOR* descriptors = nullptr;
    EXPECT_EQ(object.notifications->GetApoNotificationRegistrationInfo(nullptr, &count), result::nullPointer);
    EXPECT_EQ(object.notifications->GetApoNotificationRegistrationInfo(&descriptors, nullptr),
              result::nullPointer);
    EXPECT_EQ(object.notifications->GetApoNotificationRegistrationInfo(nullptr, nullptr),
              result::nullPointer);
}

KORVA_OF_EACH_CLASS(Notification);

}  // namespace
}  // namespace korva::test
