// The published interfaces of audio devices.
#pragma once

#include "native/device_interfaces.h"
#include "platform/published/property_interfaces.h"

namespace korva::published {

/// {D666063F-1587-4E43-81F1-B948E807363F}
template <>
inline constexpr GUID iidOf<IMMDevice> = {
    0xD666063F, 0x1587, 0x4E43, {0x81, 0xF1, 0xB9, 0x48, 0xE8, 0x07, 0x36, 0x3F}};

}  // namespace korva::published
