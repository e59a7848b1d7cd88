// The properties of an endpoint.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/counted_object.h"
#include "platform/published/property_interfaces.h"
#include "platform/registry.h"

namespace korva::platform::devices {

/// A store over the "Properties" of an endpoint's key. Without that key it is empty, and the first value that
/// is set makes it; values whose names are no property keys are not there. All calls read the registry anew,
/// and give E_NOTFOUND once the endpoint was removed, E_POINTER for a null pointer, STG_E_ACCESSDENIED for
/// what the store wasn't opened for.  [any, blocks]
class DeviceProperties final : public CountedObject<IPropertyStore> {
public:
    /// `endpoint` is the endpoint's open key.
    DeviceProperties(RegistryKey endpoint, bool reads, bool writes);

    HRESULT STDMETHODCALLTYPE GetCount(DWORD* count) override;
    /// E_INVALIDARG past the last one.
    HRESULT STDMETHODCALLTYPE GetAt(DWORD index, PROPERTYKEY* key) override;
    /// A value that isn't there is VT_EMPTY and no failure. What `*value` held before is not freed.
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override;
    /// At once in the registry; VT_EMPTY deletes. E_INVALIDARG for a kind that the registry doesn't keep.
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY key, REFPROPVARIANT value) override;
    /// Brings what was set to the disk.
    HRESULT STDMETHODCALLTYPE Commit() override;

private:
    ~DeviceProperties() override = default;

    RegistryResult open(RegistryKey& properties) const;
    RegistryResult readKeys(std::vector<PROPERTYKEY>& keys) const;
    /// What `use` gives for the keys there are; E_POINTER without `out`, which it fills.
    template <class Use>
    HRESULT withKeys(const void* out, const Use& use) const;
    HRESULT put(const std::string& name, REFPROPVARIANT value) const;
    HRESULT remove(const std::string& name) const;

    const RegistryKey key;
    const bool mayRead;
    const bool mayWrite;
};

}  // namespace korva::platform::devices
