#include "params/fx_property_store.h"

#include <mutex>
#include <utility>

#include "framework/describe_members.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/published_call.h"
#include "platform/registry_values.h"

namespace korva::params {
namespace {

using framework::Ref;
using platform::publishedCall;
using platform::RegistryResult;

/// A longer name than this ends an enumeration: a key's text is far shorter.
constexpr std::size_t nameCapacity = 512;

}  // namespace

// An empty path must not be opened: it would be that of the root.
Ref<FxPropertyStore> FxPropertyStore::Open(std::string_view endpointId, std::string_view setName) {
    std::string path = propertySetPath(endpointId, setName);
    platform::RegistryKey key;
    if (path.empty() || platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                                .open(path, platform::RegistryAccess::read, key) != 0) {
        return nullptr;
    }
    return framework::create<FxPropertyStore>(std::move(key), std::move(path), std::string(endpointId),
                                              std::string(setName));
}

FxPropertyStore::FxPropertyStore(platform::RegistryKey openKey, std::string path, std::string endpoint,
                                 std::string set, std::uint32_t modeBits)
    : keyPath(std::move(path)),
      key(std::move(openKey)),
      mode(modeBits),
      endpointId(std::move(endpoint)),
      setName(std::move(set)) {
    pair(
        attachedChannel, [this](const auto&, const auto& incoming) { keepChannel(incoming); },
        [this](const auto&) { SyncToChannel(); });
}

void FxPropertyStore::describeMembers(framework::ClassInfo& info) {
    framework::describe(info, "channel", &FxPropertyStore::attachedChannel);
    framework::describe(info, "valueWritten", &FxPropertyStore::valueWritten);
    framework::describe(info, "valueDeleted", &FxPropertyStore::valueDeleted);
}

void FxPropertyStore::onClose() {
    cutWires();
    ActiveObject::onClose();
}

// Any thread asks, so not `isAlive`: that value is the owner's.
bool FxPropertyStore::isOpen() const noexcept {
    return key && closedCounter()->get() == 0;
}

HRESULT FxPropertyStore::GetCount(DWORD* count) {
    return publishedCall([&] {
        if (!isOpen()) {
            return published::invalidHandle;
        }
        if (count == nullptr) {
            return published::nullPointer;
        }
        std::string name;
        DWORD index = 0;
        while (key.valueName(index, nameCapacity, name) == 0) {
            ++index;
        }
        *count += index;
        return published::ok;
    });
}

HRESULT FxPropertyStore::GetAt(DWORD index, PROPERTYKEY* found) {
    return publishedCall([&] {
        if (!isOpen()) {
            return published::invalidHandle;
        }
        if (found == nullptr) {
            return published::nullPointer;
        }
        std::string name;
        if (const RegistryResult result = key.valueName(index, nameCapacity, name)) {
            return platform::hresultOf(result);
        }
        const PROPERTYKEY named = platform::TextToKey(name);
        if (!platform::isValidKey(named)) {
            return published::invalidArgument;
        }
        *found = named;
        return published::ok;
    });
}

HRESULT FxPropertyStore::GetValue(REFPROPERTYKEY property, PROPVARIANT* value) {
    return publishedCall([&] {
        if (!isOpen()) {
            return published::invalidHandle;
        }
        if (value == nullptr) {
            return published::nullPointer;
        }
        PropVariantClear(value);
        platform::RegistryValue stored;
        if (const RegistryResult result = key.readValue(platform::KeyToText(property), stored)) {
            return platform::hresultOf(result);
        }
        return platform::variantOf(stored, *value);
    });
}

HRESULT FxPropertyStore::SetValue(REFPROPERTYKEY property, REFPROPVARIANT value) {
    return publishedCall([&] {
        if (!isOpen()) {
            return published::invalidHandle;
        }
        const std::string name = platform::KeyToText(property);
        ValueBytes taken;
        if (const HRESULT result = takeBytes(value, taken)) {
            return result;
        }
        return taken.kind == VT_EMPTY ? remove(name) : put(name, taken);
    });
}

HRESULT FxPropertyStore::Commit() {
    return publishedCall(
        [&] { return isOpen() ? platform::hresultOf(key.flush()) : published::invalidHandle; });
}

HRESULT FxPropertyStore::put(const std::string& valueName, const ValueBytes& value) {
    const HRESULT result = platform::hresultOf(WriteValue(valueName, value, persists()));
    if (result == published::ok) {
        valueWritten.set(valueName, decltype(valueWritten)::pulse);
    }
    return result;
}

HRESULT FxPropertyStore::remove(const std::string& valueName) {
    if (const Ref<StoreChannel> peer = currentChannel()) {
        sendDeleteValue(*peer, storeName(), valueName);
    }
    const HRESULT result = persists() ? platform::hresultOf(key.deleteValue(valueName)) : published::ok;
    if (result == published::ok) {
        valueDeleted.set(valueName, decltype(valueDeleted)::pulse);
    }
    return result;
}

RegistryResult FxPropertyStore::WriteValue(std::string_view valueName, const ValueBytes& value,
                                           bool persist) {
    const std::optional<std::uint32_t> type = platform::registryTypeOf(value.kind);
    if (!type) {
        return published::unspecifiedFailure;
    }
    if (const Ref<StoreChannel> peer = currentChannel()) {
        sendValue(*peer, storeName(), valueName, value);
    }
    return persist ? key.setValue(valueName, *type, value.bytes.bytes()) : 0;
}

Ref<StoreChannel> FxPropertyStore::currentChannel() {
    const std::lock_guard guard(channelMutex);
    return channel;
}

// The one that goes is dropped outside of the lock: it may be the last share, and closes a stream.
void FxPropertyStore::keepChannel(const Ref<StoreChannel>& incoming) {
    Ref<StoreChannel> previous = incoming;
    const std::lock_guard guard(channelMutex);
    std::swap(channel, previous);
}

void FxPropertyStore::SyncToChannel() {
    const Ref<StoreChannel> peer = currentChannel();
    if (peer == nullptr) {
        return;
    }
    sendSync(*peer, storeName());
    std::string name;
    for (std::uint32_t index = 0; key.valueName(index, nameCapacity, name) == 0; ++index) {
        sendStoredValue(name);
    }
}

// A value that can't be read is passed over.
void FxPropertyStore::sendStoredValue(std::string_view valueName) {
    const PROPERTYKEY property = platform::TextToKey(valueName);
    platform::PropertyValue value;
    ValueBytes taken;
    if (GetValue(property, value.out()) == published::ok && takeBytes(value.get(), taken) == published::ok) {
        static_cast<void>(WriteValue(platform::KeyToText(property), taken, false));
    }
}

}  // namespace korva::params
