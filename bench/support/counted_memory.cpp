#include "bench/support/counted_memory.h"

#include <malloc.h>

#include <cstdlib>
#include <new>

namespace korva::bench {

namespace {

constinit thread_local bool counts = false;
constinit thread_local std::ptrdiff_t live = 0;

void* counted(void* memory) {
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    if (counts) {
        live += static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
    }
    return memory;
}

void freeCounted(void* memory) noexcept {
    if (counts) {
        live -= static_cast<std::ptrdiff_t>(malloc_usable_size(memory));
    }
    std::free(memory);
}

}  // namespace

CountedMemory::CountedMemory() noexcept {
    live = 0;
    counts = true;
}

CountedMemory::~CountedMemory() {
    counts = false;
}

std::ptrdiff_t CountedMemory::liveBytes() const noexcept {
    return live;
}

}  // namespace korva::bench

// The others of the standard library call these.
void* operator new(std::size_t size) {
    return korva::bench::counted(std::malloc(size));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    void* memory = nullptr;
    return korva::bench::counted(
        posix_memalign(&memory, static_cast<std::size_t>(alignment), size) == 0 ? memory : nullptr);
}

void operator delete(void* memory) noexcept {
    korva::bench::freeCounted(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    korva::bench::freeCounted(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept {
    korva::bench::freeCounted(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    korva::bench::freeCounted(memory);
}
