// ULONG, without the system's headers.
#pragma once

namespace korva::platform {
using ReferenceCount = unsigned long;
}
