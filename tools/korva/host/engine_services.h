// What an audio engine hands to an object as it sets it up.
#pragma once

#include "platform/counted_object.h"
#include "platform/published/audio_services.h"
#include "platform/published/device_interfaces.h"

namespace korva::tool {

/// A property store that has no property and takes none.  [any]
class EmptyStore final : public platform::CountedObject<IPropertyStore> {
public:
    HRESULT STDMETHODCALLTYPE GetCount(DWORD* count) override;
    HRESULT STDMETHODCALLTYPE GetAt(DWORD index, PROPERTYKEY* key) override;
    /// A missing property is no fault: it is VT_EMPTY.
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override;
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY key, REFPROPVARIANT value) override;
    HRESULT STDMETHODCALLTYPE Commit() override;

private:
    ~EmptyStore() override = default;
};

/// The devices of a graph: the endpoint, or none.  [any]
class EndpointCollection final : public platform::CountedObject<IMMDeviceCollection> {
public:
    /// `device` may be null.
    explicit EndpointCollection(IMMDevice* device);

    HRESULT STDMETHODCALLTYPE GetCount(UINT* count) override;
    HRESULT STDMETHODCALLTYPE Item(UINT index, IMMDevice** device) override;

private:
    ~EndpointCollection() override = default;

    const platform::Reference<IMMDevice> endpoint;
};

/// The services of an engine that has a work queue and keeps no log.  [any]
class EngineServices final : public platform::CountedObject<IServiceProvider> {
public:
    HRESULT STDMETHODCALLTYPE QueryService(REFGUID service, REFIID id, void** object) override;

private:
    ~EngineServices() override = default;
};

}  // namespace korva::tool
