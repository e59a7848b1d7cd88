// An endpoint's three sets of effect properties, from the registry.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "framework/active_object.h"
#include "framework/published_object.h"
#include "framework/wiring.h"
#include "params/fx_property_store.h"
#include "params/fx_store_watcher.h"
#include "platform/published/device_interfaces.h"
#include "platform/published/property_interfaces.h"

namespace korva::params {

/// Stands in for the system's own provider where there is none: three stores, and a watch on each of their
/// keys. The published methods may be called on any thread, and are carried to the owner's.  [com, blocks]
class FxPropertySets final : public framework::PublishedObject<FxPropertySets, framework::ActiveObject,
                                                               published::IAudioSystemEffectsPropertyStore>,
                             public framework::Wiring<FxPropertySets> {
public:
    using SetType = published::AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE;
    using StoreValue = framework::Observable<framework::Held<FxPropertyStore>>;

    /// Called when values of a set have changed, with each key that the set has: which of them changed isn't
    /// known, so repeats have to be harmless.  [owner]
    using OnChange = std::function<void(SetType, REFPROPERTYKEY)>;

    /// Without `onChange` nothing is watched. A device that doesn't tell its identifier has an empty one.
    FxPropertySets(framework::Ref<IMMDevice> device, OnChange onChange);

    static void describeMembers(framework::ClassInfo& info);

    /// All three: S_OK with a new store, or with null if the set has no key; nothing else but E_POINTER for a
    /// null `store`, and E_OUTOFMEMORY. The store takes the place of the set's last one, which is closed. The
    /// access mode makes no difference.
    HRESULT STDMETHODCALLTYPE OpenDefaultPropertyStore(DWORD accessMode, IPropertyStore** store) override;
    HRESULT STDMETHODCALLTYPE OpenUserPropertyStore(DWORD accessMode, IPropertyStore** store) override;
    HRESULT STDMETHODCALLTYPE OpenVolatilePropertyStore(DWORD accessMode, IPropertyStore** store) override;

    /// E_FAIL: nothing here resets a set, and `onChange` is the only one to hear of changes.
    HRESULT STDMETHODCALLTYPE ResetUserPropertyStore() override;
    HRESULT STDMETHODCALLTYPE ResetVolatilePropertyStore() override;
    HRESULT STDMETHODCALLTYPE RegisterPropertyChangeNotification(
        published::IAudioSystemEffectsPropertyChangeNotificationClient* client) override;
    HRESULT STDMETHODCALLTYPE UnregisterPropertyChangeNotification(
        published::IAudioSystemEffectsPropertyChangeNotificationClient* client) override;

    /// The store of each set that was opened last.
    StoreValue defaultStore{*this};
    StoreValue userStore{*this};
    StoreValue volatileStore{*this};

private:
    void onClose() override;

    HRESULT open(StoreValue& held, std::string_view setName, IPropertyStore** store);
    [[nodiscard]] framework::Ref<FxPropertyStore> openHere(StoreValue& held, std::string_view setName);

    void watchSet(SetType type, std::string_view setName);
    void reportAll(SetType type, const platform::RegistryKey& key);

    framework::Ref<IMMDevice> device;
    std::string endpointId;
    OnChange onChange;
    std::vector<framework::Held<FxStoreWatcher>> watchers;
};

}  // namespace korva::params
