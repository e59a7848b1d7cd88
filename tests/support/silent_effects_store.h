// What providers of effect properties in tests have in common.
#pragma once

#include "framework/object_class.h"
#include "framework/published_object.h"
#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"

namespace korva::test {

/// The base of a provider `Self`, whose own the opening of sets is: it resets none, and tells nobody of
/// changes.
template <class Self>
class SilentEffectsStore : public framework::PublishedObject<Self, framework::ObjectBase,
                                                             published::IAudioSystemEffectsPropertyStore> {
public:
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
};

}  // namespace korva::test
