// What the system tells of an endpoint.
#include <cassert>
#include <optional>

#include "engine/effect_core.h"
#include "engine/volume_level.h"
#include "params/effect_keys.h"
#include "params/effects_store_provider.h"
#include "platform/ordinal_case.h"
#include "platform/property_key.h"
#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/unicode.h"

namespace korva::engine {

using framework::Ref;
using platform::PropertyValue;

namespace {

/// What is stored as a text; nothing of anything else, nor where a store has no such value.
std::optional<platform::WideString> textAt(IPropertyStore& store, REFPROPERTYKEY key) {
    PropertyValue value;
    if (published::failed(store.GetValue(key, value.out())) || value->vt != VT_LPWSTR ||
        value->pwszVal == nullptr) {
        return std::nullopt;
    }
    return platform::WideString(value->pwszVal);
}

bool isOne(IPropertyStore* store, REFPROPERTYKEY key) {
    PropertyValue value;
    return store != nullptr && published::succeeded(store->GetValue(key, value.out())) &&
           value->vt == VT_UI4 && value->ulVal == 1;
}

}  // namespace

void EffectCore::onApoNotification(const published::APO_NOTIFICATION& notification) {
    assert(isOwnerThread());
    switch (notification.type) {
        case published::APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME:
            onVolumeChange(notification.audioEndpointVolumeChange);
            break;
        case published::APO_NOTIFICATION_TYPE_ENDPOINT_PROPERTY_CHANGE:
            onEndpointProperty(notification.audioEndpointPropertyChange);
            break;
        case published::APO_NOTIFICATION_TYPE_SYSTEM_EFFECTS_PROPERTY_CHANGE:
            onSystemEffectsProperty(notification.audioSystemEffectsPropertyChange);
            break;
        default:
            break;
    }
}

// Two that don't tell are the same: an object that was given no identifier hears of endpoints without one.
bool EffectCore::isOwnEndpoint(IMMDevice* endpoint) const {
    return platform::equalIgnoringCase(identifierOf(endpoint), endpointIdStrW.value());
}

void EffectCore::onVolumeChange(const published::AUDIO_ENDPOINT_VOLUME_CHANGE_NOTIFICATION& change) {
    if (isOwnEndpoint(change.endpoint) && change.volume != nullptr) {
        masterVolumeDb.set(volumeDb(change.volume->fMasterVolume));
    }
}

void EffectCore::onEndpointProperty(const published::AUDIO_ENDPOINT_PROPERTY_CHANGE_NOTIFICATION& change) {
    if (!isOwnEndpoint(change.endpoint) || !(change.propertyKey == params::disableSysFxKey)) {
        return;
    }
    postAndForget([self = framework::WeakRef<EffectCore>(*this),
                   isDisabled = isOne(change.propertyStore, change.propertyKey)] {
        if (const Ref<EffectCore> core = self.lock()) {
            core->sysFxDisabled.set(isDisabled);
        }
    });
}

void EffectCore::onSystemEffectsProperty(
    const published::AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION& change) {
    if (isOwnEndpoint(change.endpoint) && change.propertyStoreContext == params::storeContext) {
        onEffectsProperty(change.propertyKey);
    }
}

// The numbers that select an engine are read only as the effect's identity or its store changes. Whoever
// installs settings writes them before the identity.
void EffectCore::onEffectsProperty(REFPROPERTYKEY key) {
    assert(isOwnerThread());
    if (!userStore.value() || !platform::isValidKey(fxIdKey)) {
        return;
    }
    followFxId();
    if (key.fmtid == fxId.value()) {
        requestChunk(key.pid - params::effect_property::firstChunk);
    } else if (key == params::hardwarePulseKey) {
        hardwarePulseTask = postLater(&EffectCore::pulseHardware);
    } else if (key == params::clientListKey) {
        clientListTask = postLater(&EffectCore::readClientList);
    }
}

void EffectCore::followFxId() {
    const std::optional<platform::WideString> text = textAt(*userStore.value(), fxIdKey);
    if (!text || *text == fxIdTextW.value()) {
        return;
    }
    const GUID incoming = platform::GuidFromText(platform::toUtf8(*text));
    if (!(incoming == fxId.value())) {
        fxId.set(incoming);
    }
}

// A pid below the first chunk's makes an index past all lists.
void EffectCore::requestChunk(std::uint32_t index) {
    const std::shared_ptr<const ChunkReaders> readers = chunkReaders.value();
    if (readers != nullptr && index < readers->size()) {
        (*readers)[index]->RequestRead(userStore.value());
    }
}

framework::TaskHandle EffectCore::postLater(void (EffectCore::*method)()) {
    return postTask([self = framework::WeakRef<EffectCore>(*this), method] {
        if (const Ref<EffectCore> core = self.lock()) {
            ((*core).*method)();
        }
    });
}

void EffectCore::pulseHardware() {
    hardwarePulse.set(true);
}

}  // namespace korva::engine
