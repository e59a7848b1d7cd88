// The system's audio devices.
#pragma once

#include "platform/published/device_interfaces.h"

namespace korva::platform {

/// Makes an enumerator, which is the caller's to release. What it answers, and all that comes from it, is the
/// system's own on Windows; on Linux the same published interfaces lead to the endpoints that the registry
/// has in the place where Windows keeps them:
///
///     HKEY_LOCAL_MACHINE\Software\Microsoft\Windows\CurrentVersion\MMDevices\Audio\Render|Capture\{guid}
///
/// The calling thread is in a COM apartment. Fails where the system has no such service; `*enumerator` is
/// null then.  [any, blocks]
HRESULT createDeviceEnumerator(IMMDeviceEnumerator** enumerator) noexcept;

}  // namespace korva::platform
