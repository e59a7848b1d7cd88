// What the system can wait for: a handle, until it is signalled.
#pragma once

#include <windef.h>

namespace korva::platform {

using WaitHandle = HANDLE;

}  // namespace korva::platform
