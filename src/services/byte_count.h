// What a module counts of the parameters that it gets.
#pragma once

#include <cstdint>

namespace korva::services {

/// Bytes of parameters that a module counted, and when. Its 16 bytes are shown as they are.
struct ByteCount {
    std::uint32_t bytes = 0;
    std::uint32_t clockStart = 0;  ///< Of the module's own clock, ms.
    std::uint32_t clockEnd = 0;
    std::uint32_t captureClock = 0;  ///< Of the process clock before the module was asked, ms.

    bool operator==(const ByteCount&) const = default;
};
static_assert(sizeof(ByteCount) == 16);

}  // namespace korva::services
