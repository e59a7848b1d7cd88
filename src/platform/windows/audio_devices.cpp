#include "platform/audio_devices.h"

#include <combaseapi.h>

namespace korva::platform {
namespace {

/// {BCDE0395-E52F-467C-8E3D-C4579291692E}: the class of device enumerators.
constexpr CLSID enumeratorClass = {
    0xBCDE0395, 0xE52F, 0x467C, {0x8E, 0x3D, 0xC4, 0x57, 0x92, 0x91, 0x69, 0x2E}};

}  // namespace

HRESULT createDeviceEnumerator(IMMDeviceEnumerator** enumerator) noexcept {
    *enumerator = nullptr;
    return CoCreateInstance(enumeratorClass, nullptr, published::classContextInProcess,
                            published::iidOf<IMMDeviceEnumerator>, reinterpret_cast<void**>(enumerator));
}

}  // namespace korva::platform
