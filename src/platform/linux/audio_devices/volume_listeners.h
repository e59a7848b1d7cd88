// Who hears of an endpoint's volume.
#pragma once

#include <optional>

#include "audio_devices/registry_listeners.h"
#include "platform/endpoint_values.h"
#include "platform/published/device_interfaces.h"

namespace korva::platform::devices {

/// The volume callbacks of one endpoint. They come when volume or mute differ from what they were, whichever
/// process changes them; several changes that come close together may be told as one.  [any]
class VolumeListeners final : public RegistryListeners {
public:
    explicit VolumeListeners(RegistryKey endpoint) : RegistryListeners(std::move(endpoint)) {}

    /// Says that what the endpoint is about to be set to is of this context, which those who listen are told
    /// then. What another process or object sets has the context of all zero.
    void announce(const EndpointLoudness& coming, LPCGUID context);

private:
    struct Announced {
        EndpointLoudness loudness;
        GUID context{};
    };

    RegistryResult remember() override;
    void look() override;
    GUID contextOf(const EndpointLoudness& loudness);

    EndpointLoudness last;  ///< Written before the thread starts, and by it.

    Mutex announcedMutex;
    std::optional<Announced> announced;
};

}  // namespace korva::platform::devices
