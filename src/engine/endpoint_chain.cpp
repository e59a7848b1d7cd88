// Which value follows from which, from the endpoint's identifier down to the parameters, and how.
#include <utility>

#include "engine/effect_core.h"
#include "engine/endpoint_steps.h"
#include "params/effect_keys.h"
#include "platform/property_key.h"

namespace korva::engine {

using framework::from;
using framework::Held;
using framework::Ref;

namespace {

void ignoreChange(const EffectsStore&, const EffectsStore&) {}

// Another store or effect begins with a set of its own: what it doesn't set is at its default, and not as the
// last one left it.
std::shared_ptr<const params::ParameterSet> parametersFor(const PropertyStore&, const GUID&,
                                                          const GUID& engineId) {
    return parametersOf(engineId);
}

}  // namespace

// One line for each value, in the order in which they come to be.
void EffectCore::deriveEndpointChain() {
    derive(outEndpointId, from(endpointIdStrW, isAlive), endpointIdOf);
    derive(endpointGuidText, from(outEndpointId), guidTextIn);
    derive(endpointGuid, from(endpointGuidText), platform::GuidFromText);
    derive(deviceEnumerator, from(outEndpointId), &EffectCore::newEnumerator);
    derive(device, from(deviceEnumerator, outEndpointId), deviceOf);
    derive(endpointVolume, from(device), volumeOf);
    derive(endpointProperties, from(device), propertiesOf);
    derive(effectsStore, from(device, overrideStore), &EffectCore::openEffectsStores);
    pair(effectsStore, ignoreChange, [this](const auto&) { keepFallbackStore(); });
    derive(defaultStore, from(effectsStore), defaultStoreOf);
    derive(userStore, from(effectsStore), userStoreOf);
    derive(volatileStore, from(effectsStore), volatileStoreOf);
    derive(fxId, from(userStore), &EffectCore::fxIdIn);
    derive(fxIdText, from(fxId), textOf);
    derive(fxIdTextW, from(fxId), wideTextOf);
    derive(presetVersion, from(userStore, fxId), presetVersionIn);
    derive(modeFlags, from(userStore, fxId), modeFlagsIn);
    derive(engineId, from(userStore, fxId), engineIdIn);
    derive(parameterSet, from(userStore, fxId, engineId), parametersFor);
    derive(chunkReaders, from(userStore, fxId, parameterSet), readersOf);
    derive(hasClientList, from(clientList), hasEntries);
}

Ref<IMMDeviceEnumerator> EffectCore::newEnumerator(const std::string& endpointId) const {
    return endpointId.empty() ? nullptr : surroundings.newDeviceEnumerator();
}

// Its watchers may outlive the moment at which the object is done with it.
EffectsStore EffectCore::openEffectsStores(const Ref<IMMDevice>& ofDevice, const EffectsStore& replacement) {
    auto opened = params::openEffectsStore(
        ofDevice, replacement, surroundings.systemSuppliesStores,
        [self = framework::WeakRef<EffectCore>(*this)](params::FxPropertySets::SetType, REFPROPERTYKEY key) {
            if (const Ref<EffectCore> core = self.lock()) {
                core->onEffectsProperty(key);
            }
        });
    incomingFallbackStore = std::move(opened.fallback);
    return opened.store;
}

// The last one has been in use until now. It closes when this change is through: other threads' calls are
// served while it ends, and they shall find the chain whole.
void EffectCore::keepFallbackStore() {
    std::swap(fallbackStore, incomingFallbackStore);
    if (incomingFallbackStore) {
        fallbackStoreTask = postTask([last = std::move(incomingFallbackStore)]() mutable { last = nullptr; });
    }
}

GUID EffectCore::fxIdIn(const PropertyStore& store) const {
    return guidAt(store, fxIdKey);
}

void EffectCore::readClientList() {
    clientList.set(clientListIn(userStore.value()));
}

}  // namespace korva::engine
