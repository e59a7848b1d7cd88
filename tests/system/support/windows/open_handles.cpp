#include "tests/system/support/open_handles.h"

#include <windows.h>

#include <cstdint>
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

// Asked one by one: not every system counts them. Handles are multiples of four, and a test has far fewer
// than are looked at.
std::size_t openHandles() {
    constexpr std::uintptr_t last = 0x8000;
    std::size_t count = 0;
    for (std::uintptr_t number = 4; number <= last; number += 4) {
        DWORD flags = 0;
        count += GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags) != 0 ? 1U : 0U;
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
