#include "params/fx_property_sets.h"

#include <cstddef>
#include <cstdint>
#include <utility>

#include "framework/describe_members.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "platform/published_call.h"
#include "platform/unicode.h"

namespace korva::params {

using framework::Held;
using framework::Ref;
using platform::RegistryKey;

namespace {

/// How long a set has to stay as it is before its change is reported.
constexpr std::int64_t pauseMs = 1;

/// Empty if the device doesn't tell.
std::string identifierOf(IMMDevice* device) {
    LPWSTR text = nullptr;
    if (device == nullptr || published::failed(device->GetId(&text)) || text == nullptr) {
        return {};
    }
    std::string identifier = platform::toUtf8(text);
    CoTaskMemFree(text);
    return identifier;
}

/// False past the last value. The name may be of any length.
bool readValueName(const RegistryKey& key, std::uint32_t index, std::string& name) {
    std::size_t capacity = 256;
    platform::RegistryResult result = key.valueName(index, capacity, name);
    while (result == platform::registry_result::moreData) {
        capacity *= 2;
        result = key.valueName(index, capacity, name);
    }
    return result == platform::registry_result::success;
}

}  // namespace

FxPropertySets::FxPropertySets(Ref<IMMDevice> ofDevice, OnChange tellChange)
    : device(std::move(ofDevice)), endpointId(identifierOf(device.get())), onChange(std::move(tellChange)) {
    if (onChange) {
        watchSet(published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_DEFAULT, property_set::standard);
        watchSet(published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_USER, property_set::user);
        watchSet(published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE_VOLATILE, property_set::temporary);
    }
}

void FxPropertySets::describeMembers(framework::ClassInfo& info) {
    framework::describe(info, "defaultStore", &FxPropertySets::defaultStore);
    framework::describe(info, "userStore", &FxPropertySets::userStore);
    framework::describe(info, "volatileStore", &FxPropertySets::volatileStore);
}

// The key that is about to be published is another one than before; afterwards that couldn't be seen.
void FxPropertySets::watchSet(SetType type, std::string_view setName) {
    const auto watcher = Held<FxStoreWatcher>::first(
        framework::create<FxStoreWatcher>(propertySetPath(endpointId, setName), pauseMs));
    watchers.push_back(watcher);
    pair(
        watcher->published,
        [this, type](const RegistryKey& last, const RegistryKey& changed) {
            if (changed != last) {
                reportAll(type, changed);
            }
        },
        [](const RegistryKey&) {});
}

// What is told may close this object, and let go of it.
void FxPropertySets::reportAll(SetType type, const RegistryKey& changed) {
    const auto self = Ref<FxPropertySets>::share(this);
    const RegistryKey key = changed;
    const OnChange tell = onChange;
    std::string name;
    for (std::uint32_t index = 0; closedCounter()->get() == 0 && readValueName(key, index, name); ++index) {
        const PROPERTYKEY property = platform::TextToKey(name);
        if (platform::isValidKey(property)) {
            tell(type, property);
        }
    }
}

HRESULT FxPropertySets::OpenDefaultPropertyStore(DWORD, IPropertyStore** store) {
    return open(defaultStore, property_set::standard, store);
}

HRESULT FxPropertySets::OpenUserPropertyStore(DWORD, IPropertyStore** store) {
    return open(userStore, property_set::user, store);
}

HRESULT FxPropertySets::OpenVolatilePropertyStore(DWORD, IPropertyStore** store) {
    return open(volatileStore, property_set::temporary, store);
}

HRESULT FxPropertySets::open(StoreValue& held, std::string_view setName, IPropertyStore** store) {
    if (store == nullptr) {
        return published::nullPointer;
    }
    *store = nullptr;
    return platform::publishedCall([&] {
        Ref<FxPropertyStore> opened;
        runOnOwner([&] { opened = openHere(held, setName); });
        *store = opened.giveUp();
        return published::ok;
    });
}

// Calls of others are served while the watchers end: the stores are gone by then, and stay so.
Ref<FxPropertyStore> FxPropertySets::openHere(StoreValue& held, std::string_view setName) {
    if (closedCounter()->get() != 0) {
        return nullptr;
    }
    Ref<FxPropertyStore> opened = FxPropertyStore::Open(endpointId, setName);
    held.set(opened ? Held<FxPropertyStore>::first(opened) : nullptr);
    return opened;
}

HRESULT FxPropertySets::ResetUserPropertyStore() {
    return published::unspecifiedFailure;
}

HRESULT FxPropertySets::ResetVolatilePropertyStore() {
    return published::unspecifiedFailure;
}

HRESULT FxPropertySets::RegisterPropertyChangeNotification(
    published::IAudioSystemEffectsPropertyChangeNotificationClient*) {
    return published::unspecifiedFailure;
}

HRESULT FxPropertySets::UnregisterPropertyChangeNotification(
    published::IAudioSystemEffectsPropertyChangeNotificationClient*) {
    return published::unspecifiedFailure;
}

// Listeners go first, so that nothing of what is served while a watcher's thread ends is reported.
void FxPropertySets::onClose() {
    cutWires();
    for (StoreValue* const store : {&defaultStore, &userStore, &volatileStore}) {
        store->reset();
    }
    watchers.clear();
    device = nullptr;
    onChange = nullptr;
    ActiveObject::onClose();
}

}  // namespace korva::params
