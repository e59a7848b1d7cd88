// A provider of effect properties that has one set.
#pragma once

#include <utility>

#include "framework/ref.h"
#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"
#include "tests/support/silent_effects_store.h"

namespace korva::test {

/// Gives the same store as the user's whenever it is opened. To open the standard set fails, the temporary
/// one is missing; nothing is reset, and nobody is told of changes.
class UserSetAlone final : public SilentEffectsStore<UserSetAlone> {
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

private:
    const framework::Ref<IPropertyStore> user;
};

}  // namespace korva::test
