// Which notifications of the system are of use to an object.
#pragma once

#include "platform/published/audio_notifications.h"

namespace korva::engine {

/// Lists what there is to tell of a device: changes of its effects' properties, of its own, and of its
/// volume. The list is the caller's, to be freed with `CoTaskMemFree`; it has no references of its own to the
/// device. Null and 0 without a device, and without memory. S_OK; E_POINTER for a null pointer.  [any]
[[nodiscard]] HRESULT notificationsOf(IMMDevice* device, published::APO_NOTIFICATION_DESCRIPTOR** descriptors,
                                      DWORD* count) noexcept;

}  // namespace korva::engine
