#include "tests/support/page_end_samples.h"

#include <sys/mman.h>
#include <unistd.h>

#include <new>

namespace korva::test {

PageEndSamples::PageEndSamples(std::size_t sampleCount) : count(sampleCount) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    const std::size_t usable = (count * sizeof(float) + page - 1) / page * page;
    bytes = usable + page;
    pages = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED || mprotect(static_cast<char*>(pages) + usable, page, PROT_NONE) != 0) {
        throw std::bad_alloc();
    }
    begin = reinterpret_cast<float*>(static_cast<char*>(pages) + usable) - count;
}

PageEndSamples::~PageEndSamples() {
    munmap(pages, bytes);
}

}  // namespace korva::test
