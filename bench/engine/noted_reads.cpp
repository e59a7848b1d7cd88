#include "bench/engine/noted_reads.h"

#include <utility>

#include "framework/published_object.h"
#include "params/fx_property_store.h"
#include "params/property_set_path.h"
#include "platform/published/results.h"
#include "tests/support/user_set_alone.h"

namespace korva::bench {

using framework::Ref;

namespace {

using Properties = std::vector<PROPERTYKEY>;

/// Passes on what the user's set has, and notes what it was asked for.
class NotingStore final
    : public framework::PublishedObject<NotingStore, framework::ObjectBase, IPropertyStore> {
public:
    NotingStore(Ref<params::FxPropertyStore> properties, Properties& asked)
        : store(std::move(properties)), noted(asked) {}

    HRESULT STDMETHODCALLTYPE GetCount(DWORD* count) override { return store->GetCount(count); }
    HRESULT STDMETHODCALLTYPE GetAt(DWORD index, PROPERTYKEY* key) override {
        return store->GetAt(index, key);
    }
    HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override {
        noted.push_back(key);
        return store->GetValue(key, value);
    }
    HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT) override {
        return published::notImplemented;
    }
    HRESULT STDMETHODCALLTYPE Commit() override { return published::notImplemented; }

private:
    const Ref<params::FxPropertyStore> store;
    Properties& noted;
};

}  // namespace

std::vector<PROPERTYKEY> propertiesReadBy(const CoreGround& ground) {
    Properties noted;
    CoreRig rig(ground);
    // The override is there before the device, and its set is read at once.
    rig.on([&] {
        rig.core().overrideStore.set(framework::create<test::UserSetAlone>(framework::create<NotingStore>(
            params::FxPropertyStore::Open(ground.endpointId(), params::property_set::user), noted)));
        rig.begin();
    });
    return noted;
}

}  // namespace korva::bench
