#include "platform/audio_devices.h"

#include "platform/published/results.h"

namespace korva::platform {

HRESULT createDeviceEnumerator(IMMDeviceEnumerator** enumerator) noexcept {
    *enumerator = nullptr;
    return published::notImplemented;
}

}  // namespace korva::platform
