// The published interface of class objects, which make objects.
#pragma once

#include "native/class_factory.h"
#include "platform/published/unknown.h"

namespace korva::published {

/// {00000001-0000-0000-C000-000000000046}
template <>
inline constexpr GUID iidOf<IClassFactory> = {
    0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

}  // namespace korva::published
