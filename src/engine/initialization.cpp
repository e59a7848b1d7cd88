// What the audio engine sets an object up with.
#include <algorithm>
#include <cassert>
#include <cstring>

#include "engine/effect_core.h"
#include "params/effect_keys.h"
#include "platform/property_value.h"
#include "platform/published/results.h"

namespace korva::engine {

using framework::Ref;
using platform::PropertyValue;
using published::APOInitSystemEffects2;
using published::APOInitSystemEffects3;

namespace {

namespace processing_mode = published::processing_mode;

constexpr const GUID* knownModes[] = {&processing_mode::defaultMode, &processing_mode::communications,
                                      &processing_mode::speech,      &processing_mode::notification,
                                      &processing_mode::media,       &processing_mode::movie,
                                      &processing_mode::raw};

bool isKnownMode(const GUID& mode) {
    return std::ranges::any_of(knownModes, [&](const GUID* known) { return *known == mode; });
}

// A host's record may lie anywhere.
template <class Record>
Record recordAt(const BYTE* data) {
    Record record;
    std::memcpy(&record, data, sizeof(record));
    return record;
}

/// The identifier of the last device, which is the endpoint; empty if there is none or it can't be had.
platform::WideString endpointIn(IMMDeviceCollection* devices) {
    UINT count = 0;
    IMMDevice* last = nullptr;
    if (devices == nullptr || published::failed(devices->GetCount(&count)) || count == 0 ||
        published::failed(devices->Item(count - 1, &last))) {
        return {};
    }
    return identifierOf(Ref<IMMDevice>::adopt(last).get());
}

template <class Service>
HRESULT findService(IServiceProvider* services, const GUID& serviceId, Ref<Service>& found) {
    found = nullptr;
    if (services == nullptr) {
        return published::nullPointer;
    }
    void* service = nullptr;
    const HRESULT result = services->QueryService(serviceId, published::iidOf<Service>, &service);
    if (published::failed(result)) {
        return result;
    }
    found = Ref<Service>::adopt(static_cast<Service*>(service));
    return found ? result : published::noInterface;
}

}  // namespace

HRESULT EffectCore::initializeApo(std::uint32_t dataSize, const BYTE* data) {
    assert(isOwnerThread());
    const bool isThird = dataSize == sizeof(APOInitSystemEffects3);
    if (!isThird && dataSize != sizeof(APOInitSystemEffects2)) {
        return published::ok;
    }
    if (data == nullptr) {
        return published::invalidArgument;
    }
    return isThird ? initialize(recordAt<APOInitSystemEffects3>(data))
                   : initialize(recordAt<APOInitSystemEffects2>(data));
}

HRESULT EffectCore::initialize(const APOInitSystemEffects2& record) {
    if (record.pAPOEndpointProperties == nullptr || record.pAPOSystemEffectsProperties == nullptr) {
        return published::invalidArgument;
    }
    endpointIdStrW.set(endpointIn(record.pDeviceCollection));
    processingMode = record.AudioProcessingMode;
    if (!isKnownMode(processingMode)) {
        return published::invalidArgument;
    }
    PropertyValue isDisabled;
    const HRESULT result =
        record.pAPOSystemEffectsProperties->GetValue(params::disableSysFxKey, isDisabled.out());
    if (published::succeeded(result)) {
        sysFxDisabled.set(isDisabled->vt == VT_UI4 && isDisabled->ulVal == 1);
    }
    const HRESULT modeResult = takeMode();
    return published::failed(modeResult) ? modeResult : result;
}

// An object works without a trace to write to. A host without a work queue gets to know that one is wanted,
// though all else is set up by then.
HRESULT EffectCore::initialize(const APOInitSystemEffects3& record) {
    static_cast<void>(findService(record.pServiceProvider, published::loggingServiceId, loggingService));
    if (record.pAPOEndpointProperties == nullptr) {
        return published::invalidArgument;
    }
    endpointIdStrW.set(endpointIn(record.pDeviceCollection));
    const HRESULT result = findWorkQueue(record.pServiceProvider);
    processingMode = record.AudioProcessingMode;
    if (!isKnownMode(processingMode)) {
        return published::invalidArgument;
    }
    const HRESULT modeResult = takeMode();
    return published::failed(modeResult) ? modeResult : result;
}

HRESULT EffectCore::findWorkQueue(IServiceProvider* services) {
    Ref<published::IAudioProcessingObjectRTQueueService> service;
    const HRESULT result = findService(services, published::workQueueServiceId, service);
    return service ? service->GetRealTimeWorkQueue(&rtWorkQueue) : result;
}

// Endpoint effects are for all streams together, raw ones among them.
HRESULT EffectCore::takeMode() {
    if (!params::isEffectKind(effectType)) {
        return published::invalidArgument;
    }
    processor.passThrough.set(isRaw());
    return published::ok;
}

bool EffectCore::isRaw() const noexcept {
    return processingMode == processing_mode::raw && params::isEffectKind(effectType) &&
           static_cast<params::EffectKind>(effectType) != params::EffectKind::endpoint;
}

}  // namespace korva::engine
