#include "tests/system/support/open_handles.h"

#include <malloc.h>

#include <filesystem>
#include <iterator>

// A sanitizer's own heap is not the system's; it counts by itself.
extern "C" [[gnu::weak]] std::size_t __sanitizer_get_current_allocated_bytes();

namespace korva::test {

std::size_t openHandles() {
    // Looking takes one more for its time.
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(open), end(open))) - 1;
}

std::size_t bytesInUse() {
    if (__sanitizer_get_current_allocated_bytes != nullptr) {
        return __sanitizer_get_current_allocated_bytes();
    }
    const struct mallinfo2 heap = mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

}  // namespace korva::test
