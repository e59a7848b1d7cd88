// As ULONG is declared for Linux.
#pragma once

#include <cstdint>

namespace korva::platform {
using ReferenceCount = std::uint32_t;
}
