// What holds of the system's devices wherever there are any; a machine without a sound service has none.
#include "platform/audio_devices.h"

#include <gtest/gtest.h>

#include "platform/com_apartment.h"
#include "platform/published/results.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

class AudioDevices : public testing::Test {
protected:
    AudioDevices() { result = createDeviceEnumerator(&enumerator); }
    ~AudioDevices() override {
        if (enumerator != nullptr) {
            enumerator->Release();
        }
    }

    test::OwnRegistry registry;
    const ComApartment apartment;
    IMMDeviceEnumerator* enumerator = reinterpret_cast<IMMDeviceEnumerator*>(1);
    HRESULT result = published::ok;
};

TEST_F(AudioDevices, AnEnumeratorIsGivenExactlyIfTheCallSucceeds) {
    EXPECT_EQ(published::failed(result), enumerator == nullptr) << std::hex << result;
}

TEST_F(AudioDevices, AnUnknownDeviceIsAFailureAndNull) {
    if (enumerator == nullptr) {
        GTEST_SKIP() << "no sound service";
    }
    auto* device = reinterpret_cast<IMMDevice*>(1);
    const WCHAR id[] = {'n', 'o', 'n', 'e', 0};
    EXPECT_TRUE(published::failed(enumerator->GetDevice(id, &device)));
    EXPECT_EQ(device, nullptr);
}

}  // namespace
}  // namespace korva::platform
