#include "audio_devices/device_listeners.h"

#include <algorithm>
#include <utility>

#include "platform/endpoint_values.h"
#include "platform/unicode.h"

namespace korva::platform::devices {
namespace {

WideString wideId(const EndpointPlace& place) {
    return toWide(endpointIdOf(place));
}

IMMNotificationClient& clientOf(IUnknown& object) {
    return static_cast<IMMNotificationClient&>(object);
}

}  // namespace

RegistryResult DeviceListeners::remember() {
    return read(last);
}

void DeviceListeners::look() {
    AllKnown now;
    if (read(now) != registry_result::success) {
        return;
    }
    for (const Known& one : now) {
        tellOfOne(one);
    }
    for (const Known& one : last) {
        if (find(now, one.place) == nullptr) {
            const WideString id = wideId(one.place);
            tellAll([&](IUnknown& client) { clientOf(client).OnDeviceRemoved(id.c_str()); });
        }
    }
    tellOfDefault(eRender, now);
    tellOfDefault(eCapture, now);
    last = std::move(now);
}

void DeviceListeners::tellOfOne(const Known& now) {
    const Known* const before = find(last, now.place);
    if (before != nullptr && before->state == now.state) {
        return;
    }
    const WideString id = wideId(now.place);
    tellAll([&](IUnknown& client) {
        if (before == nullptr) {
            clientOf(client).OnDeviceAdded(id.c_str());
        } else {
            clientOf(client).OnDeviceStateChanged(id.c_str(), now.state);
        }
    });
}

void DeviceListeners::tellOfDefault(EDataFlow flow, const AllKnown& now) {
    const Known* const before = firstActive(last, flow);
    const Known* const after = firstActive(now, flow);
    const bool isSame =
        before != nullptr && after != nullptr ? before->place == after->place : before == after;
    if (isSame) {
        return;
    }
    const WideString id = after != nullptr ? wideId(after->place) : WideString();
    const LPCWSTR idOrNull = after != nullptr ? id.c_str() : nullptr;
    tellAll([&](IUnknown& client) {
        for (const ERole role : {eConsole, eMultimedia, eCommunications}) {
            clientOf(client).OnDefaultDeviceChanged(flow, role, idOrNull);
        }
    });
}

// One that is removed while its state is read is left out.
RegistryResult DeviceListeners::read(AllKnown& all) const {
    AllKnown found;
    for (const EDataFlow flow : {eRender, eCapture}) {
        std::vector<EndpointPlace> places;
        if (const RegistryResult result = readEndpoints(machine, flow, places);
            result != registry_result::success) {
            return result;
        }
        for (const EndpointPlace& place : places) {
            RegistryKey endpoint;
            DWORD state = 0;
            if (machine.open(endpointPath(place), RegistryAccess::read, endpoint) ==
                    registry_result::success &&
                readEndpointState(endpoint, state) == registry_result::success) {
                found.push_back({place, state});
            }
        }
    }
    all = std::move(found);
    return registry_result::success;
}

const DeviceListeners::Known* DeviceListeners::find(const AllKnown& all, const EndpointPlace& place) {
    const auto found = std::ranges::find(all, place, &Known::place);
    return found == all.end() ? nullptr : &*found;
}

const DeviceListeners::Known* DeviceListeners::firstActive(const AllKnown& all, EDataFlow flow) {
    const auto found = std::ranges::find_if(all, [flow](const Known& one) {
        return one.place.flow == flow && one.state == published::deviceStateActive;
    });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace korva::platform::devices
