#include "tests/support/page_end_samples.h"

#include <windows.h>

#include <new>

namespace korva::test {

PageEndSamples::PageEndSamples(std::size_t sampleCount) : count(sampleCount) {
    SYSTEM_INFO system{};
    GetSystemInfo(&system);
    const std::size_t page = system.dwPageSize;
    const std::size_t usable = (count * sizeof(float) + page - 1) / page * page;
    bytes = usable + page;
    pages = VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    DWORD before = 0;
    if (pages == nullptr ||
        !VirtualProtect(static_cast<char*>(pages) + usable, page, PAGE_NOACCESS, &before)) {
        throw std::bad_alloc();
    }
    begin = reinterpret_cast<float*>(static_cast<char*>(pages) + usable) - count;
}

PageEndSamples::~PageEndSamples() {
    VirtualFree(pages, 0, MEM_RELEASE);
}

}  // namespace korva::test
