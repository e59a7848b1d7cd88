#include "platform/audio_devices.h"

#include <utility>

#include "audio_devices/device_enumerator.h"
#include "platform/published_call.h"
#include "platform/registry_values.h"

namespace korva::platform {

HRESULT createDeviceEnumerator(IMMDeviceEnumerator** enumerator) noexcept {
    *enumerator = nullptr;
    return publishedCall([&] {
        RegistryResult result = registry_result::success;
        RegistryKey root = RegistryKey::root(RegistryRoot::localMachine, &result);
        if (result != registry_result::success) {
            return hresultOf(result);
        }
        *enumerator = new devices::DeviceEnumerator(std::move(root));
        return published::ok;
    });
}

}  // namespace korva::platform
