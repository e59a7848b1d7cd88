#include "engine/notification_wishes.h"

#include <gtest/gtest.h>

#include "framework/ref.h"
#include "params/effects_store_provider.h"
#include "platform/published/results.h"
#include "tests/support/fake_device.h"

namespace korva::engine {
namespace {

using published::APO_NOTIFICATION_DESCRIPTOR;

/// What a list is before it is asked for.
struct Answer {
    APO_NOTIFICATION_DESCRIPTOR leftOver{};
    APO_NOTIFICATION_DESCRIPTOR* list = &leftOver;
    DWORD count = 99;
};

TEST(NotificationWishes, AreNoneWithoutADevice) {
    Answer answer;
    EXPECT_EQ(notificationsOf(nullptr, &answer.list, &answer.count), published::ok);
    EXPECT_EQ(answer.list, nullptr);
    EXPECT_EQ(answer.count, 0u);
}

TEST(NotificationWishes, AreEffectsPropertiesThenPropertiesThenVolume) {
    const auto device = framework::create<test::FakeDevice>("a device");
    Answer answer;
    ASSERT_EQ(notificationsOf(device.get(), &answer.list, &answer.count), published::ok);
    ASSERT_EQ(answer.count, 3u);
    const APO_NOTIFICATION_DESCRIPTOR* const list = answer.list;
    EXPECT_EQ(list[0].type, published::APO_NOTIFICATION_TYPE_SYSTEM_EFFECTS_PROPERTY_CHANGE);
    EXPECT_EQ(list[0].audioSystemEffectsPropertyChange.device, device.get());
    EXPECT_EQ(list[0].audioSystemEffectsPropertyChange.propertyStoreContext, params::storeContext);
    EXPECT_EQ(list[1].type, published::APO_NOTIFICATION_TYPE_ENDPOINT_PROPERTY_CHANGE);
    EXPECT_EQ(list[1].audioEndpointPropertyChange.device, device.get());
    EXPECT_EQ(list[2].type, published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME);
    EXPECT_EQ(list[2].audioEndpointVolume.device, device.get());
    CoTaskMemFree(answer.list);
}

TEST(NotificationWishes, AddNoReferenceToTheDevice) {
    const auto device = framework::create<test::FakeDevice>("a device");
    Answer answer;
    ASSERT_EQ(notificationsOf(device.get(), &answer.list, &answer.count), published::ok);
    device->AddRef();
    EXPECT_EQ(device->Release(), 1u);
    CoTaskMemFree(answer.list);
}

TEST(NotificationWishes, NeedPlacesForTheAnswer) {
    Answer answer;
    EXPECT_EQ(notificationsOf(nullptr, nullptr, &answer.count), published::nullPointer);
    EXPECT_EQ(notificationsOf(nullptr, &answer.list, nullptr), published::nullPointer);
}

}  // namespace
}  // namespace korva::engine
