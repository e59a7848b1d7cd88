// Where the registry has the system's audio endpoints, and how they are called.
//
//     HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\MMDevices\Audio\Render|Capture\{guid}
//
// is the key of one endpoint, "{0.0.0.00000000}.{guid}" (render) or "{0.0.1.00000000}.{guid}" (capture) its
// identifier.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/published/device_interfaces.h"

namespace korva::platform {

/// One endpoint, which may be there or not.
struct EndpointPlace {
    EDataFlow flow = eRender;  ///< eRender or eCapture.
    GUID guid{};

    friend bool operator==(const EndpointPlace& a, const EndpointPlace& b) noexcept {
        return a.flow == b.flow && a.guid == b.guid;
    }
};

/// The sub-key of an endpoint's key with its properties: values that are named by the text of their property
/// keys.
inline constexpr std::string_view endpointPropertiesKey = "Properties";

/// PKEY_Device_FriendlyName: what users know an endpoint by.
inline constexpr PROPERTYKEY endpointFriendlyName = {
    {0xA45C254E, 0xDF1C, 0x4EFD, {0x80, 0x20, 0x67, 0xD1, 0x46, 0xA8, 0x50, 0xE0}}, 14};
/// PKEY_Device_DeviceDesc: the same without the name of the device that the endpoint belongs to.
inline constexpr PROPERTYKEY endpointDescription = {
    {0xA45C254E, 0xDF1C, 0x4EFD, {0x80, 0x20, 0x67, 0xD1, 0x46, 0xA8, 0x50, 0xE0}}, 2};

/// In lower case.  [any]
[[nodiscard]] std::string endpointIdOf(const EndpointPlace& place);

/// Nothing unless the whole text is an identifier, in upper or lower case.  [any]
[[nodiscard]] std::optional<EndpointPlace> endpointPlaceOf(std::string_view id);

/// The place that a key's name below `endpointsPath(flow)` stands for; nothing if it is no GUID.  [any]
[[nodiscard]] std::optional<EndpointPlace> endpointPlaceOf(EDataFlow flow, std::string_view keyName);

/// The path, below HKEY_LOCAL_MACHINE, of the key above those of all endpoints.  [any]
[[nodiscard]] std::string_view endpointsPath() noexcept;
/// The same for those of one flow, eRender or eCapture.  [any]
[[nodiscard]] std::string endpointsPath(EDataFlow flow);
/// The path of an endpoint's own key.  [any]
[[nodiscard]] std::string endpointPath(const EndpointPlace& place);

}  // namespace korva::platform
