// The root of all published interfaces, and the identifiers of the others.
#pragma once

#include "native/unknown.h"
#include "platform/published/base_types.h"

namespace korva::published {

/// The identifier of an interface; each header of interfaces tells those of its own.
template <class Interface>
inline constexpr GUID iidOf = {};

/// {00000000-0000-0000-C000-000000000046}
template <>
inline constexpr GUID iidOf<IUnknown> = {
    0x00000000, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

}  // namespace korva::published
