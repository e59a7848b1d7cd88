// What the system knows a thread by.
#pragma once

#include <windef.h>

namespace korva::platform {

using ThreadHandle = HANDLE;

}  // namespace korva::platform
