// What the registry tells of an endpoint beside its properties.
//
// An embedded registry has all of this. In the system's, volume and mute are the sound service's own and not
// here.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/endpoint_place.h"
#include "platform/registry.h"

namespace korva::platform {

/// Values of an endpoint's key.
namespace endpoint_value {
inline constexpr std::string_view state = "DeviceState";    ///< REG_DWORD: one of the published states.
inline constexpr std::string_view volume = "MasterVolume";  ///< REG_DWORD: the bits of a float, 0.0 to 1.0.
inline constexpr std::string_view muted = "Muted";          ///< REG_DWORD: not 0 for a muted one.
}  // namespace endpoint_value

/// How loud an endpoint plays.
struct EndpointLoudness {
    float scalar = 1.0F;  ///< 0.0 to 1.0, as listeners hear it.
    bool isMuted = false;

    friend bool operator==(const EndpointLoudness& a, const EndpointLoudness& b) noexcept = default;
};

/// Whether a number is a volume: 0.0 to 1.0.  [any]
[[nodiscard]] constexpr bool isVolume(float scalar) noexcept {
    return scalar >= 0.0F && scalar <= 1.0F;
}

/// The endpoints of one flow, eRender or eCapture, in the registry's order; keys whose name is no GUID are
/// none. `machine` is the root HKEY_LOCAL_MACHINE. `places` is as it was unless the result is 0; no such key
/// at all is no endpoints.  [any, blocks]
[[nodiscard]] RegistryResult readEndpoints(const RegistryKey& machine, EDataFlow flow,
                                           std::vector<EndpointPlace>& places);

/// The state of the endpoint whose key is open, as one of the published numbers: what is no such number, or
/// isn't there, is a device that isn't present. The result is that of the key: 0, 1018, or why it can't be
/// read.  [any, blocks]
[[nodiscard]] RegistryResult readEndpointState(const RegistryKey& endpoint, std::uint32_t& state);

/// Likewise: full volume and not muted for what isn't there or no volume.  [any, blocks]
[[nodiscard]] RegistryResult readEndpointLoudness(const RegistryKey& endpoint, EndpointLoudness& loudness);

/// The value of a volume.  [any]
[[nodiscard]] RegistryValue volumeValue(float scalar);
/// A value of a number.  [any]
[[nodiscard]] RegistryValue numberValue(std::uint32_t number);

}  // namespace korva::platform
