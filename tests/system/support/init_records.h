// The records that a host initialises an object with.
#pragma once

#include "platform/published/audio_objects.h"
#include "tests/system/support/known_ids.h"

namespace korva::test {

/// The second generation's. Whatever it points at is null or outlives it.
[[nodiscard]] inline published::APOInitSystemEffects2 secondRecord(IPropertyStore* endpointProperties,
                                                                   IPropertyStore* effectsProperties,
                                                                   IMMDeviceCollection* devices = nullptr,
                                                                   const GUID& mode = mode::standard) {
    published::APOInitSystemEffects2 record{};
    record.APOInit.cbSize = 88;
    record.pAPOEndpointProperties = endpointProperties;
    record.pAPOSystemEffectsProperties = effectsProperties;
    record.pDeviceCollection = devices;
    record.AudioProcessingMode = mode;
    return record;
}

/// The third generation's.
[[nodiscard]] inline published::APOInitSystemEffects3 thirdRecord(IPropertyStore* endpointProperties,
                                                                  IServiceProvider* services,
                                                                  IMMDeviceCollection* devices = nullptr,
                                                                  const GUID& mode = mode::standard) {
    published::APOInitSystemEffects3 record{};
    record.APOInit.cbSize = 80;
    record.pAPOEndpointProperties = endpointProperties;
    record.pServiceProvider = services;
    record.pDeviceCollection = devices;
    record.AudioProcessingMode = mode;
    return record;
}

/// With the size that its generation has by the documents, whatever the compiler makes of it.
template <class Record>
HRESULT initialize(published::IAudioProcessingObject& apo, Record& record) {
    return apo.Initialize(record.APOInit.cbSize, reinterpret_cast<BYTE*>(&record));
}

}  // namespace korva::test
