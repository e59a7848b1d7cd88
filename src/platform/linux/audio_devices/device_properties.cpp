#include "audio_devices/device_properties.h"

#include <cstddef>
#include <span>
#include <utility>

#include "audio_devices/device_results.h"
#include "platform/endpoint_place.h"
#include "platform/property_key.h"
#include "platform/published_call.h"
#include "platform/registry_values.h"

namespace korva::platform::devices {
namespace {

/// Longer than any name of a value.
constexpr std::size_t nameCapacity = 65536;

}  // namespace

DeviceProperties::DeviceProperties(RegistryKey endpoint, bool reads, bool writes)
    : key(std::move(endpoint)), mayRead(reads), mayWrite(writes) {}

HRESULT DeviceProperties::GetCount(DWORD* count) {
    return withKeys(count, [&](const std::vector<PROPERTYKEY>& keys) {
        *count = static_cast<DWORD>(keys.size());
        return published::ok;
    });
}

HRESULT DeviceProperties::GetAt(DWORD index, PROPERTYKEY* property) {
    return withKeys(property, [&](const std::vector<PROPERTYKEY>& keys) {
        if (index >= keys.size()) {
            return published::invalidArgument;
        }
        *property = keys[index];
        return published::ok;
    });
}

HRESULT DeviceProperties::GetValue(REFPROPERTYKEY property, PROPVARIANT* value) {
    if (value == nullptr) {
        return published::nullPointer;
    }
    PropVariantInit(value);
    if (!mayRead) {
        return published::storageAccessDenied;
    }
    return publishedCall([&] {
        RegistryKey properties;
        RegistryValue stored;
        RegistryResult result = open(properties);
        if (result == registry_result::success && properties) {
            result = properties.readValue(KeyToText(property), stored);
        }
        const bool isThere = result == registry_result::success && properties;
        if (isThere) {
            return variantOf(stored, *value);
        }
        return result == registry_result::notFound ? published::ok : deviceResult(result);
    });
}

HRESULT DeviceProperties::SetValue(REFPROPERTYKEY property, REFPROPVARIANT value) {
    if (!mayWrite) {
        return published::storageAccessDenied;
    }
    if (!isValidKey(property)) {
        return published::invalidArgument;
    }
    return publishedCall([&] {
        const std::string name = KeyToText(property);
        return value.vt == VT_EMPTY ? remove(name) : put(name, value);
    });
}

HRESULT DeviceProperties::Commit() {
    if (!mayWrite) {
        return published::storageAccessDenied;
    }
    return publishedCall([&] { return deviceResult(key.flush()); });
}

// No key, and 0, where there are no properties.
RegistryResult DeviceProperties::open(RegistryKey& properties) const {
    const RegistryResult result = key.open(endpointPropertiesKey, RegistryAccess::read, properties);
    return result == registry_result::notFound ? registry_result::success : result;
}

RegistryResult DeviceProperties::readKeys(std::vector<PROPERTYKEY>& keys) const {
    RegistryKey properties;
    RegistryResult result = open(properties);
    std::string name;
    for (std::uint32_t index = 0; result == registry_result::success && properties; ++index) {
        result = properties.valueName(index, nameCapacity, name);
        if (result != registry_result::success) {
            break;
        }
        if (const PROPERTYKEY property = TextToKey(name); isValidKey(property)) {
            keys.push_back(property);
        }
    }
    return result == registry_result::noMoreItems ? registry_result::success : result;
}

template <class Use>
HRESULT DeviceProperties::withKeys(const void* out, const Use& use) const {
    if (out == nullptr) {
        return published::nullPointer;
    }
    if (!mayRead) {
        return published::storageAccessDenied;
    }
    return publishedCall([&] {
        std::vector<PROPERTYKEY> keys;
        const RegistryResult result = readKeys(keys);
        return result == registry_result::success ? use(keys) : deviceResult(result);
    });
}

HRESULT DeviceProperties::put(const std::string& name, REFPROPVARIANT value) const {
    const std::optional<std::uint32_t> type = registryTypeOf(value.vt);
    if (!type) {
        return published::invalidArgument;
    }
    WideString joined;
    std::span<const std::byte> bytes;
    if (const HRESULT result = storedBytes(value, joined, bytes); result != published::ok) {
        return result;
    }
    RegistryKey endpoint;
    RegistryKey properties;
    RegistryResult result = key.open("", RegistryAccess::readWrite, endpoint);
    if (result == registry_result::success) {
        result = endpoint.create(endpointPropertiesKey, RegistryAccess::readWrite, properties);
    }
    if (result == registry_result::success) {
        result = properties.setValue(name, *type, bytes);
    }
    return deviceResult(result);
}

HRESULT DeviceProperties::remove(const std::string& name) const {
    RegistryKey properties;
    RegistryResult result = key.open(endpointPropertiesKey, RegistryAccess::readWrite, properties);
    if (result == registry_result::success) {
        result = properties.deleteValue(name);
    }
    return result == registry_result::notFound ? published::ok : deviceResult(result);
}

}  // namespace korva::platform::devices
