// Property stores of someone else's, for a core to read.
#pragma once

#include <utility>

#include "framework/object_base.h"
#include "framework/published_object.h"
#include "framework/ref.h"
#include "platform/property_key.h"
#include "platform/published/property_interfaces.h"
#include "platform/registry_values.h"
#include "tests/engine/walk_model.h"

namespace korva::test {

/// Has values as the registry has them.  [owner]
class WalkStore final : public framework::PublishedObject<WalkStore, framework::ObjectBase, IPropertyStore> {
public:
    HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override {
        *value = PROPVARIANT{};
        const auto found = values.find(platform::KeyToText(key));
        return found == values.end() ? published::ok : platform::variantOf(found->second, *value);
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::ok; }

    PropertyValues values;
};

/// A provider of one set, the user's.
class WalkStores final : public framework::PublishedObject<WalkStores, framework::ObjectBase,
                                                           published::IAudioSystemEffectsPropertyStore> {
public:
    explicit WalkStores(framework::Ref<WalkStore> store) : user(std::move(store)) {}

    HRESULT STDMETHODCALLTYPE OpenDefaultPropertyStore(DWORD, IPropertyStore** store) override {
        *store = nullptr;
        return published::unspecifiedFailure;
    }
    HRESULT STDMETHODCALLTYPE OpenUserPropertyStore(DWORD, IPropertyStore** store) override {
        *store = framework::Ref<WalkStore>(user).giveUp();
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE OpenVolatilePropertyStore(DWORD, IPropertyStore** store) override {
        *store = nullptr;
        return published::ok;
    }
    HRESULT STDMETHODCALLTYPE ResetUserPropertyStore() override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE ResetVolatilePropertyStore() override { return published::notImplemented; }
    HRESULT STDMETHODCALLTYPE RegisterPropertyChangeNotification(
        published::IAudioSystemEffectsPropertyChangeNotificationClient*) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE UnregisterPropertyChangeNotification(
        published::IAudioSystemEffectsPropertyChangeNotificationClient*) override {
        return published::notImplemented;
    }

private:
    framework::Ref<WalkStore> user;
};

}  // namespace korva::test
