#include "platform/memory_lock.h"

#include <sys/mman.h>

namespace korva::platform {

bool lockMemory(const void* start, std::size_t size) noexcept {
    // The kernel rounds the range out to whole pages.
    return mlock(start, size) == 0;
}

}  // namespace korva::platform
