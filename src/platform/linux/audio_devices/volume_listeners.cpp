#include "audio_devices/volume_listeners.h"

#include <mutex>

namespace korva::platform::devices {

void VolumeListeners::announce(const EndpointLoudness& coming, LPCGUID context) {
    const std::lock_guard guard(announcedMutex);
    announced = {coming, context == nullptr ? GUID{} : *context};
}

RegistryResult VolumeListeners::remember() {
    return readEndpointLoudness(key, last);
}

void VolumeListeners::look() {
    EndpointLoudness now;
    if (readEndpointLoudness(key, now) != registry_result::success || now == last) {
        return;
    }
    AUDIO_VOLUME_NOTIFICATION_DATA data{};
    data.guidEventContext = contextOf(now);
    data.bMuted = now.isMuted ? 1 : 0;
    data.fMasterVolume = now.scalar;
    data.nChannels = 1;
    data.afChannelVolumes[0] = now.scalar;
    tellAll([&](IUnknown& client) {
        AUDIO_VOLUME_NOTIFICATION_DATA own = data;  // a client may write there
        static_cast<IAudioEndpointVolumeCallback&>(client).OnNotify(&own);
    });
    last = now;
}

GUID VolumeListeners::contextOf(const EndpointLoudness& loudness) {
    const std::lock_guard guard(announcedMutex);
    return announced && announced->loudness == loudness ? announced->context : GUID{};
}

}  // namespace korva::platform::devices
