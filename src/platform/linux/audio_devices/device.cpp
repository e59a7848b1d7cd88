#include "audio_devices/device.h"

#include <cstring>
#include <utility>

#include "audio_devices/device_properties.h"
#include "audio_devices/device_results.h"
#include "audio_devices/endpoint_volume.h"
#include "platform/endpoint_values.h"
#include "platform/published_call.h"
#include "platform/unicode.h"

namespace korva::platform::devices {
namespace {

constexpr DWORD accessWrite = 1;  // STGM_WRITE

}  // namespace

Device::Device(const EndpointPlace& endpoint, RegistryKey endpointKey)
    : place(endpoint), key(std::move(endpointKey)) {}

HRESULT Device::open(const RegistryKey& machine, const EndpointPlace& place, Reference<IMMDevice>& device) {
    device.reset();
    RegistryKey key;
    const RegistryResult result = machine.open(endpointPath(place), RegistryAccess::read, key);
    if (result == registry_result::success) {
        device.reset(new Device(place, std::move(key)));
    }
    return deviceResult(result);
}

HRESULT Device::Activate(REFIID id, DWORD, PROPVARIANT*, void** object) {
    if (object == nullptr) {
        return published::nullPointer;
    }
    *object = nullptr;
    if (!(id == published::iidOf<IAudioEndpointVolume>)) {
        return published::noInterface;
    }
    return publishedCall([&] {
        DWORD state = 0;
        if (const HRESULT result = GetState(&state); result != published::ok) {
            return result;
        }
        if (state != published::deviceStateActive) {
            return published::deviceInvalidated;
        }
        *object = static_cast<IAudioEndpointVolume*>(new EndpointVolume(key));
        return published::ok;
    });
}

HRESULT Device::OpenPropertyStore(DWORD accessMode, IPropertyStore** store) {
    if (store == nullptr) {
        return published::nullPointer;
    }
    *store = nullptr;
    if (accessMode > published::accessReadWrite) {
        return published::invalidArgument;
    }
    return publishedCall([&] {
        DWORD state = 0;
        const HRESULT result = GetState(&state);
        if (result == published::ok) {
            *store =
                new DeviceProperties(key, accessMode != accessWrite, accessMode != published::accessRead);
        }
        return result;
    });
}

HRESULT Device::GetId(LPWSTR* id) {
    if (id == nullptr) {
        return published::nullPointer;
    }
    *id = nullptr;
    return publishedCall([&] {
        const WideString text = toWide(endpointIdOf(place));
        const std::size_t size = (text.size() + 1) * sizeof(WCHAR);
        *id = static_cast<LPWSTR>(CoTaskMemAlloc(size));
        if (*id == nullptr) {
            return published::outOfMemory;
        }
        std::memcpy(*id, text.c_str(), size);
        return published::ok;
    });
}

HRESULT Device::GetState(DWORD* state) {
    return state == nullptr ? published::nullPointer
                            : publishedCall([&] { return deviceResult(readEndpointState(key, *state)); });
}

HRESULT Device::GetDataFlow(EDataFlow* dataFlow) {
    if (dataFlow == nullptr) {
        return published::nullPointer;
    }
    *dataFlow = place.flow;
    return published::ok;
}

}  // namespace korva::platform::devices
