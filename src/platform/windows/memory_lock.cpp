#include "platform/memory_lock.h"

#include <windows.h>

namespace korva::platform {

bool lockMemory(const void* start, std::size_t size) noexcept {
    // The system rounds the range out to whole pages. It takes a writable pointer and writes nothing.
    return VirtualLock(const_cast<void*>(start), size) != 0;
}

std::optional<std::size_t> lockableMemory() noexcept {
    // The least working set bounds it, which each process sets for itself.
    return std::nullopt;
}

}  // namespace korva::platform
