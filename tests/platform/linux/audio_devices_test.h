// What tests of the registry's audio devices start from.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/audio_devices.h"
#include "platform/published/results.h"
#include "platform/unicode.h"
#include "tests/support/own_registry.h"
#include "tests/support/seeded_endpoint.h"

namespace korva::platform {

struct ReleaseHeld {
    template <class T>
    void operator()(T* object) const {
        object->Release();
    }
};
template <class T>
using HeldObject = std::unique_ptr<T, ReleaseHeld>;

/// A registry of the test's own, and an enumerator over it.
class AudioDevicesTest : public testing::Test {
protected:
    AudioDevicesTest() {
        IMMDeviceEnumerator* made = nullptr;
        EXPECT_EQ(createDeviceEnumerator(&made), published::ok);
        enumerator.reset(made);
    }

    [[nodiscard]] HRESULT find(const std::string& id, HeldObject<IMMDevice>& device) const {
        auto* found = reinterpret_cast<IMMDevice*>(1);
        const HRESULT result = enumerator->GetDevice(toWide(id).c_str(), &found);
        device.reset(found);
        return result;
    }
    [[nodiscard]] HeldObject<IMMDevice> deviceOf(const test::SeededEndpoint& endpoint) const {
        HeldObject<IMMDevice> device;
        EXPECT_EQ(find(endpoint.id(), device), published::ok);
        return device;
    }

    /// Null if it can't be activated.
    [[nodiscard]] static HeldObject<IAudioEndpointVolume> volumeOf(IMMDevice& device,
                                                                   HRESULT expected = published::ok) {
        auto* object = reinterpret_cast<void*>(1);
        EXPECT_EQ(device.Activate(published::iidOf<IAudioEndpointVolume>, published::classContextAll, nullptr,
                                  &object),
                  expected);
        return HeldObject<IAudioEndpointVolume>(static_cast<IAudioEndpointVolume*>(object));
    }

    [[nodiscard]] static HeldObject<IPropertyStore> storeOf(IMMDevice& device, DWORD access) {
        auto* store = reinterpret_cast<IPropertyStore*>(1);
        EXPECT_EQ(device.OpenPropertyStore(access, &store), published::ok);
        return HeldObject<IPropertyStore>(store);
    }

    [[nodiscard]] static std::string idOf(IMMDevice& device) {
        LPWSTR id = nullptr;
        EXPECT_EQ(device.GetId(&id), published::ok);
        const std::string text = id == nullptr ? std::string() : toUtf8(id);
        CoTaskMemFree(id);
        return text;
    }

    test::OwnRegistry registry;
    HeldObject<IMMDeviceEnumerator> enumerator;
};

}  // namespace korva::platform
