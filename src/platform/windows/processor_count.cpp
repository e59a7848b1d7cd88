#include "platform/processor_count.h"

#include <windows.h>

#include <algorithm>
#include <bit>

namespace korva::platform {

unsigned processorCount() noexcept {
    DWORD_PTR allowed = 0;
    DWORD_PTR ofSystem = 0;
    // The mask covers one group of 64; the system gives zero for a process that runs in several.
    if (GetProcessAffinityMask(GetCurrentProcess(), &allowed, &ofSystem) == 0 || allowed == 0) {
        return std::max<unsigned>(1, GetActiveProcessorCount(ALL_PROCESSOR_GROUPS));
    }
    return static_cast<unsigned>(std::popcount(allowed));
}

}  // namespace korva::platform
