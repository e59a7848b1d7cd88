// Who hears of endpoints that come, go and change.
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "audio_devices/registry_listeners.h"
#include "platform/endpoint_place.h"

namespace korva::platform::devices {

/// The notification clients of all endpoints: they hear of those that come and go, of states, and of another
/// first active one of a flow, which is its default for every role. They don't hear of properties.  [any]
class DeviceListeners final : public RegistryListeners {
public:
    /// `endpoints` is the key above those of all endpoints, `root` the registry's.
    DeviceListeners(RegistryKey root, RegistryKey endpoints)
        : RegistryListeners(std::move(endpoints)), machine(std::move(root)) {}

private:
    struct Known {
        EndpointPlace place;
        DWORD state;
    };
    using AllKnown = std::vector<Known>;

    RegistryResult remember() override;
    void look() override;
    void tellOfOne(const Known& now);
    void tellOfDefault(EDataFlow flow, const AllKnown& now);

    RegistryResult read(AllKnown& all) const;
    static const Known* find(const AllKnown& all, const EndpointPlace& place);
    static const Known* firstActive(const AllKnown& all, EDataFlow flow);

    const RegistryKey machine;
    AllKnown last;  ///< Written before the thread starts, and by it.
};

}  // namespace korva::platform::devices
