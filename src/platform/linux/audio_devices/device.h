// An audio endpoint as a device.
#pragma once

#include "platform/counted_object.h"
#include "platform/endpoint_place.h"
#include "platform/registry.h"

namespace korva::platform::devices {

/// Stands for the endpoint whose key was there when it was made, and reads it anew in each call. Once that is
/// removed, calls give E_NOTFOUND, also if one of the same identifier comes: that is another device.
/// E_POINTER for a null pointer.  [any, blocks]
class Device final : public CountedObject<IMMDevice, IMMEndpoint> {
public:
    /// `machine` is the registry's root. E_NOTFOUND if there is no such endpoint. `device` is null unless the
    /// result is 0.
    static HRESULT open(const RegistryKey& machine, const EndpointPlace& place, Reference<IMMDevice>& device);

    /// The volume (IAudioEndpointVolume) while the endpoint is active, else AUDCLNT_E_DEVICE_INVALIDATED;
    /// E_NOINTERFACE for everything else. Class context and parameters make no difference.
    HRESULT STDMETHODCALLTYPE Activate(REFIID id, DWORD classContext, PROPVARIANT* parameters,
                                       void** object) override;
    /// `accessMode` is 0 (to read), 1 (to write) or 2 (both).
    HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD accessMode, IPropertyStore** store) override;
    HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) override;
    HRESULT STDMETHODCALLTYPE GetState(DWORD* state) override;
    HRESULT STDMETHODCALLTYPE GetDataFlow(EDataFlow* dataFlow) override;

private:
    Device(const EndpointPlace& endpoint, RegistryKey endpointKey);
    ~Device() override = default;

    const EndpointPlace place;
    const RegistryKey key;
};

}  // namespace korva::platform::devices
