#include "audio_devices/device_enumerator.h"

#include <mutex>
#include <utility>
#include <vector>

#include "audio_devices/device.h"
#include "audio_devices/device_collection.h"
#include "audio_devices/device_results.h"
#include "platform/endpoint_values.h"
#include "platform/published_call.h"
#include "platform/unicode.h"

namespace korva::platform::devices {
namespace {

using Devices = std::vector<Reference<IMMDevice>>;

/// Adds those of one flow whose state is in the mask. One that is removed meanwhile is left out.
HRESULT addDevices(const RegistryKey& machine, EDataFlow flow, DWORD stateMask, Devices& devices) {
    std::vector<EndpointPlace> places;
    if (const RegistryResult result = readEndpoints(machine, flow, places);
        result != registry_result::success) {
        return hresultOf(result);
    }
    for (const EndpointPlace& place : places) {
        Reference<IMMDevice> device;
        DWORD state = 0;
        if (Device::open(machine, place, device) == published::ok &&
            device->GetState(&state) == published::ok && (state & stateMask) != 0) {
            devices.push_back(std::move(device));
        }
    }
    return published::ok;
}

}  // namespace

DeviceEnumerator::~DeviceEnumerator() {
    if (listeners != nullptr) {
        listeners->removeAll();
    }
}

HRESULT DeviceEnumerator::EnumAudioEndpoints(EDataFlow dataFlow, DWORD stateMask,
                                             IMMDeviceCollection** devices) {
    if (devices == nullptr) {
        return published::nullPointer;
    }
    *devices = nullptr;
    const bool isFlow = dataFlow == eRender || dataFlow == eCapture || dataFlow == eAll;
    if (!isFlow || (stateMask & ~published::deviceStatesAll) != 0) {
        return published::invalidArgument;
    }
    return publishedCall([&] {
        Devices found;
        for (const EDataFlow flow : {eRender, eCapture}) {
            if (dataFlow == flow || dataFlow == eAll) {
                if (const HRESULT result = addDevices(machine, flow, stateMask, found);
                    result != published::ok) {
                    return result;
                }
            }
        }
        *devices = new DeviceCollection(std::move(found));
        return published::ok;
    });
}

HRESULT DeviceEnumerator::GetDefaultAudioEndpoint(EDataFlow dataFlow, ERole role, IMMDevice** device) {
    if (device == nullptr) {
        return published::nullPointer;
    }
    *device = nullptr;
    const bool isFlow = dataFlow == eRender || dataFlow == eCapture;
    if (!isFlow || (role != eConsole && role != eMultimedia && role != eCommunications)) {
        return published::invalidArgument;
    }
    return publishedCall([&] {
        Devices found;
        if (const HRESULT result = addDevices(machine, dataFlow, published::deviceStateActive, found);
            result != published::ok) {
            return result;
        }
        if (found.empty()) {
            return published::notFound;
        }
        *device = found.front().release();
        return published::ok;
    });
}

HRESULT DeviceEnumerator::GetDevice(LPCWSTR id, IMMDevice** device) {
    if (device == nullptr) {
        return published::nullPointer;
    }
    *device = nullptr;
    if (id == nullptr) {
        return published::nullPointer;
    }
    return publishedCall([&] {
        const auto place = endpointPlaceOf(toUtf8(id));
        if (!place) {
            return published::notFound;
        }
        Reference<IMMDevice> found;
        const HRESULT result = Device::open(machine, *place, found);
        *device = found.release();
        return result;
    });
}

HRESULT DeviceEnumerator::RegisterEndpointNotificationCallback(IMMNotificationClient* client) {
    if (client == nullptr) {
        return published::nullPointer;
    }
    return publishedCall([&] {
        std::shared_ptr<DeviceListeners> present;
        const HRESULT result = openListeners(present);
        return result == published::ok ? hresultOf(present->add(*client)) : result;
    });
}

HRESULT DeviceEnumerator::UnregisterEndpointNotificationCallback(IMMNotificationClient* client) {
    if (client == nullptr) {
        return published::nullPointer;
    }
    return publishedCall([&] {
        std::shared_ptr<DeviceListeners> present;
        {
            const std::lock_guard guard(mutex);
            present = listeners;
        }
        return present == nullptr ? published::notFound : present->remove(*client);
    });
}

HRESULT DeviceEnumerator::openListeners(std::shared_ptr<DeviceListeners>& opened) {
    const std::lock_guard guard(mutex);
    if (listeners == nullptr) {
        RegistryKey key;
        const RegistryResult result = machine.create(endpointsPath(), RegistryAccess::read, key);
        if (result != registry_result::success) {
            return hresultOf(result);
        }
        listeners = std::make_shared<DeviceListeners>(machine, std::move(key));
    }
    opened = listeners;
    return published::ok;
}

}  // namespace korva::platform::devices
