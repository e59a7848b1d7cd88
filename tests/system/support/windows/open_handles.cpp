#include "tests/system/support/open_handles.h"

#include <windows.h>

#include <stdexcept>
#include <vector>

namespace korva::test {
namespace {

std::size_t bytesIn(HANDLE heap) {
    std::size_t bytes = 0;
    PROCESS_HEAP_ENTRY entry{};
    HeapLock(heap);
    while (HeapWalk(heap, &entry) != 0) {
        bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0;
    }
    HeapUnlock(heap);
    return bytes;
}

}  // namespace

std::size_t openHandles() {
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) == 0) {
        throw std::runtime_error("the system doesn't tell the number of handles");
    }
    return count;
}

std::size_t bytesInUse() {
    std::vector<HANDLE> heaps(GetProcessHeaps(0, nullptr));
    heaps.resize(GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data()));
    std::size_t bytes = 0;
    for (HANDLE const heap : heaps) {
        bytes += bytesIn(heap);
    }
    return bytes;
}

}  // namespace korva::test
