// The way to the devices.
#pragma once

#include <memory>
#include <utility>

#include "audio_devices/device_listeners.h"
#include "platform/counted_object.h"
#include "platform/mutex.h"

namespace korva::platform::devices {

/// Finds the endpoints that the registry has at the time of the call. E_POINTER for a null pointer,
/// E_INVALIDARG for an unknown flow, role or state.  [any, blocks]
class DeviceEnumerator final : public CountedObject<IMMDeviceEnumerator> {
public:
    /// `root` is the registry's.
    explicit DeviceEnumerator(RegistryKey root) : machine(std::move(root)) {}

    /// In the registry's order, those to be heard first.
    HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow dataFlow, DWORD stateMask,
                                                 IMMDeviceCollection** devices) override;
    /// The first active one; E_NOTFOUND if there is none.
    HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow dataFlow, ERole role,
                                                      IMMDevice** device) override;
    /// E_NOTFOUND for a text that is no endpoint's identifier.
    HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR id, IMMDevice** device) override;

    /// See `DeviceListeners`. Makes the key above the endpoints if it is missing.
    HRESULT STDMETHODCALLTYPE RegisterEndpointNotificationCallback(IMMNotificationClient* client) override;
    HRESULT STDMETHODCALLTYPE UnregisterEndpointNotificationCallback(IMMNotificationClient* client) override;

private:
    ~DeviceEnumerator() override;

    HRESULT openListeners(std::shared_ptr<DeviceListeners>& opened);

    const RegistryKey machine;

    Mutex mutex;
    std::shared_ptr<DeviceListeners> listeners;  ///< None before the first client.
};

}  // namespace korva::platform::devices
