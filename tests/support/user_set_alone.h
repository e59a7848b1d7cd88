// A provider of effect properties that has one set.
#pragma once

#include <utility>

#include "framework/object_class.h"
#include "framework/published_object.h"
#include "framework/ref.h"
#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"

namespace korva::test {

/// Gives the same store as the user's whenever it is opened. To open the standard set fails, the temporary
/// one is missing; nothing is reset, and nobody is told of changes.
class UserSetAlone final : public framework::PublishedObject<UserSetAlone, framework::ObjectBase,
                                                             published::IAudioSystemEffectsPropertyStore> {
public:
    explicit UserSetAlone(framework::Ref<IPropertyStore> store) : user(std::move(store)) {}

    HRESULT STDMETHODCALLTYPE OpenDefaultPropertyStore(DWORD, IPropertyStore** store) override {
        *store = nullptr;
        return published::unspecifiedFailure;
    }
    HRESULT STDMETHODCALLTYPE OpenUserPropertyStore(DWORD, IPropertyStore** store) override {
        *store = framework::Ref<IPropertyStore>(user).giveUp();
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
    const framework::Ref<IPropertyStore> user;
};

}  // namespace korva::test
