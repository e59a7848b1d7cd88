// A provider of effect properties that does what a test says.
#pragma once

#include <utility>
#include <vector>

#include "framework/ref.h"
#include "platform/published/property_interfaces.h"
#include "platform/published/results.h"
#include "tests/support/memory_property_store.h"
#include "tests/support/silent_effects_store.h"

namespace korva::test {

/// One of the sets: a store in memory, and what it was opened for. Any thread may use it, one at a time.
struct FakeSet {
    framework::Ref<MemoryPropertyStore> store = MemoryPropertyStore::make();
    bool isMissing = false;   ///< To open it succeeds and gives nothing.
    bool isReadOnly = false;  ///< To open it for more fails.
    bool isRefused = false;   ///< To open it fails.
    std::vector<DWORD> openedFor;

    HRESULT open(DWORD accessMode, IPropertyStore** out) {
        openedFor.push_back(accessMode);
        *out = nullptr;
        if (isRefused || (isReadOnly && accessMode == published::accessReadWrite)) {
            return published::unspecifiedFailure;
        }
        if (!isMissing) {
            *out = framework::Ref<MemoryPropertyStore>(store).giveUp();
        }
        return published::ok;
    }
};

/// Has three sets, and tells nobody of changes.
class FakeEffectsStore final : public SilentEffectsStore<FakeEffectsStore> {
public:
    HRESULT STDMETHODCALLTYPE OpenDefaultPropertyStore(DWORD accessMode, IPropertyStore** store) override {
        return standard.open(accessMode, store);
    }
    HRESULT STDMETHODCALLTYPE OpenUserPropertyStore(DWORD accessMode, IPropertyStore** store) override {
        return user.open(accessMode, store);
    }
    HRESULT STDMETHODCALLTYPE OpenVolatilePropertyStore(DWORD accessMode, IPropertyStore** store) override {
        return temporary.open(accessMode, store);
    }

    FakeSet standard;
    FakeSet user;
    FakeSet temporary;
};

}  // namespace korva::test
