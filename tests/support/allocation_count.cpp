#include "tests/support/allocation_count.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "tests/support/usable_size.h"

// All forms of the operators: some sanitizers bring their own for those that are left out, which end
// elsewhere.

namespace korva::test {
namespace {

constinit std::atomic<std::uint64_t> made{0};
constinit std::atomic<std::uint64_t> givenBack{0};
constinit std::atomic<std::uint64_t> bytes{0};

// What the thread may still allocate.
constexpr std::uint64_t noLimit = ~std::uint64_t{0};
constinit thread_local std::uint64_t allowance = noLimit;

bool takeAllowance() noexcept {
    if (allowance != noLimit && allowance != 0) {
        --allowance;
        return true;
    }
    return allowance == noLimit;
}

void* counted(void* memory) {
    if (memory == nullptr || !takeAllowance()) {
        std::free(memory);
        throw std::bad_alloc();
    }
    made.fetch_add(1, std::memory_order_relaxed);
    bytes.fetch_add(usableSize(memory), std::memory_order_relaxed);
    return memory;
}

void giveBack(void* memory) noexcept {
    if (memory != nullptr) {
        givenBack.fetch_add(1, std::memory_order_relaxed);
        bytes.fetch_sub(usableSize(memory), std::memory_order_relaxed);
        std::free(memory);
    }
}

// The place before an aligned block that holds what `malloc` gave for it.
void*& originOf(void* aligned) noexcept {
    return static_cast<void**>(aligned)[-1];
}

// The systems have no aligned allocation in common.
void* allocateAligned(std::size_t size, std::size_t alignment) {
    void* const origin = counted(std::malloc(size + alignment + sizeof(void*)));
    const auto lowest = reinterpret_cast<std::uintptr_t>(origin) + sizeof(void*);
    const std::uintptr_t address = (lowest + alignment - 1) & ~(std::uintptr_t{alignment} - 1);
    void* const aligned =
        static_cast<std::byte*>(origin) + (address - reinterpret_cast<std::uintptr_t>(origin));
    originOf(aligned) = origin;
    return aligned;
}

}  // namespace

std::uint64_t allocationsMade() noexcept {
    return made.load(std::memory_order_relaxed);
}

std::uint64_t allocationsInUse() noexcept {
    const std::uint64_t gone = givenBack.load(std::memory_order_relaxed);
    return made.load(std::memory_order_relaxed) - gone;
}

std::uint64_t bytesInUse() noexcept {
    return bytes.load(std::memory_order_relaxed);
}

AllocationLimit::AllocationLimit(std::uint64_t allowed) noexcept {
    allowance = allowed;
}

AllocationLimit::~AllocationLimit() {
    allowance = noLimit;
}

}  // namespace korva::test

void* operator new(std::size_t size) {
    return korva::test::counted(std::malloc(size == 0 ? 1 : size));
}

void* operator new(std::size_t size, std::align_val_t alignment) {
    return korva::test::allocateAligned(size, static_cast<std::size_t>(alignment));
}

void* operator new[](std::size_t size) {
    return operator new(size);
}

void* operator new[](std::size_t size, std::align_val_t alignment) {
    return operator new(size, alignment);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    try {
        return operator new(size, alignment);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new[](std::size_t size, const std::nothrow_t& refused) noexcept {
    return operator new(size, refused);
}

void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t& refused) noexcept {
    return operator new(size, alignment, refused);
}

void operator delete(void* memory) noexcept {
    korva::test::giveBack(memory);
}

void operator delete(void* memory, std::align_val_t) noexcept {
    korva::test::giveBack(memory == nullptr ? nullptr : korva::test::originOf(memory));
}

void operator delete[](void* memory) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory, std::align_val_t alignment) noexcept {
    operator delete(memory, alignment);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

void operator delete(void* memory, std::size_t, std::align_val_t alignment) noexcept {
    operator delete(memory, alignment);
}

void operator delete[](void* memory, std::size_t) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory, std::size_t, std::align_val_t alignment) noexcept {
    operator delete(memory, alignment);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    operator delete(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    operator delete(memory);
}

void operator delete(void* memory, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    operator delete(memory, alignment);
}

void operator delete[](void* memory, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    operator delete(memory, alignment);
}
