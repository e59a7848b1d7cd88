#include "params/effects_store_provider.h"

#include <utility>

#include "platform/published/results.h"
#include "platform/system_version.h"

namespace korva::params {

using framework::Held;
using framework::Ref;
using published::IAudioSystemEffectsPropertyStore;

namespace {

constexpr DWORD inProcess = 1;  // CLSCTX_INPROC_SERVER

/// The system's provider; null if it refuses.
Ref<IAudioSystemEffectsPropertyStore> activateSystemStore(IMMDevice& device) {
    GUID context = storeContext;
    PROPVARIANT parameter{};
    parameter.vt = VT_CLSID;
    parameter.puuid = &context;
    void* activated = nullptr;
    const HRESULT result = device.Activate(published::iidOf<IAudioSystemEffectsPropertyStore>, inProcess,
                                           &parameter, &activated);
    if (published::failed(result)) {
        return nullptr;
    }
    return Ref<IAudioSystemEffectsPropertyStore>::adopt(
        static_cast<IAudioSystemEffectsPropertyStore*>(activated));
}

}  // namespace

bool systemSuppliesEffectStores() noexcept {
    const platform::SystemVersion& version = platform::systemVersion();
    return systemSuppliesEffectStores(version.major, version.build);
}

EffectsStore openEffectsStore(const Ref<IMMDevice>& device,
                              const Ref<IAudioSystemEffectsPropertyStore>& overrideStore, bool systemSupplies,
                              FxPropertySets::OnChange onChange) {
    if (overrideStore || !device) {
        return {overrideStore, {}};
    }
    if (systemSupplies) {
        if (Ref<IAudioSystemEffectsPropertyStore> store = activateSystemStore(*device)) {
            return {std::move(store), {}};
        }
    }
    auto sets = Held<FxPropertySets>::first(framework::create<FxPropertySets>(device, std::move(onChange)));
    return {sets.ref(), sets};
}

}  // namespace korva::params
