// What a system whose sound service finds no driver answers.
#include "platform/audio_devices.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/com_apartment.h"
#include "platform/published/results.h"
#include "platform/unicode.h"
#include "tests/support/own_registry.h"
#include "tests/support/seeded_endpoint.h"

namespace korva::platform {
namespace {

constexpr auto notInitialised = static_cast<HRESULT>(0x800401F0U);  // CO_E_NOTINITIALIZED

TEST(AudioDevicesOfWindows, OutsideAnApartmentThereIsNone) {
    std::thread([] {
        auto* enumerator = reinterpret_cast<IMMDeviceEnumerator*>(1);
        EXPECT_EQ(createDeviceEnumerator(&enumerator), notInitialised);
        EXPECT_EQ(enumerator, nullptr);
    }).join();
}

TEST(AudioDevicesOfWindows, AnEndpointThatOnlyTheRegistryHasIsNotActive) {
    const test::OwnRegistry registry;
    const ComApartment apartment;
    const test::SeededEndpoint endpoint(eRender, published::deviceStateActive);
    IMMDeviceEnumerator* enumerator = nullptr;
    const HRESULT created = createDeviceEnumerator(&enumerator);
    if (enumerator == nullptr) {
        EXPECT_TRUE(published::failed(created));
        GTEST_SKIP() << "no sound service";
    }
    IMMDevice* device = nullptr;
    const WideString id = toWide(endpoint.id());
    if (published::succeeded(enumerator->GetDevice(id.c_str(), &device))) {
        DWORD state = published::deviceStateActive;
        EXPECT_EQ(device->GetState(&state), published::ok);
        EXPECT_NE(state, published::deviceStateActive);
        device->Release();
    } else {
        EXPECT_EQ(device, nullptr);
    }
    enumerator->Release();
}

}  // namespace
}  // namespace korva::platform
