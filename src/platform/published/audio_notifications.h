// What the audio engine tells an audio object while it lives. In no header of mingw-w64.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/published/device_interfaces.h"
#include "platform/published/property_interfaces.h"

namespace korva::published {

/// What a notification tells of. The engine may send others.
enum APO_NOTIFICATION_TYPE : std::uint32_t {
    APO_NOTIFICATION_TYPE_NONE = 0,
    APO_NOTIFICATION_TYPE_ENDPOINT_VOLUME = 1,
    APO_NOTIFICATION_TYPE_ENDPOINT_PROPERTY_CHANGE = 2,
    APO_NOTIFICATION_TYPE_SYSTEM_EFFECTS_PROPERTY_CHANGE = 3
};

struct AUDIO_ENDPOINT_VOLUME_CHANGE_NOTIFICATION {
    IMMDevice* endpoint;
    AUDIO_VOLUME_NOTIFICATION_DATA* volume;
};

struct AUDIO_ENDPOINT_PROPERTY_CHANGE_NOTIFICATION {
    IMMDevice* endpoint;
    IPropertyStore* propertyStore;
    PROPERTYKEY propertyKey;
};

struct AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION {
    IMMDevice* endpoint;
    GUID propertyStoreContext;
    AUDIO_SYSTEMEFFECTS_PROPERTYSTORE_TYPE propertyStoreType;
    IPropertyStore* propertyStore;
    PROPERTYKEY propertyKey;
};

/// All that it refers to is the sender's, and lives for the call.
struct APO_NOTIFICATION {
    APO_NOTIFICATION_TYPE type;
    union {
        AUDIO_ENDPOINT_VOLUME_CHANGE_NOTIFICATION audioEndpointVolumeChange;
        AUDIO_ENDPOINT_PROPERTY_CHANGE_NOTIFICATION audioEndpointPropertyChange;
        AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION audioSystemEffectsPropertyChange;
    };
};

/// Which notifications an audio object wants.
struct APO_NOTIFICATION_DESCRIPTOR {
    struct OfDevice {
        IMMDevice* device;
    };
    struct OfPropertyStore {
        IMMDevice* device;
        GUID propertyStoreContext;
    };

    APO_NOTIFICATION_TYPE type;
    union {
        OfDevice audioEndpointVolume;
        OfDevice audioEndpointPropertyChange;
        OfPropertyStore audioSystemEffectsPropertyChange;
    };
};
static_assert(sizeof(APO_NOTIFICATION_DESCRIPTOR) == 32);
static_assert(offsetof(APO_NOTIFICATION_DESCRIPTOR, audioSystemEffectsPropertyChange) == 8);
static_assert(offsetof(APO_NOTIFICATION_DESCRIPTOR::OfPropertyStore, propertyStoreContext) == 8);

static_assert(sizeof(AUDIO_ENDPOINT_VOLUME_CHANGE_NOTIFICATION) == 16);
static_assert(sizeof(AUDIO_ENDPOINT_PROPERTY_CHANGE_NOTIFICATION) == 40);
static_assert(sizeof(AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION) == 64);
static_assert(offsetof(AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION, propertyStoreContext) == 8);
static_assert(offsetof(AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION, propertyStoreType) == 24);
static_assert(offsetof(AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION, propertyStore) == 32);
static_assert(offsetof(AUDIO_SYSTEMEFFECTS_PROPERTY_CHANGE_NOTIFICATION, propertyKey) == 40);
static_assert(sizeof(APO_NOTIFICATION) == 72 && offsetof(APO_NOTIFICATION, audioEndpointVolumeChange) == 8);

}  // namespace korva::published
