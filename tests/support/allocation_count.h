// How often a program asks for memory, and what it does when it gets none.
#pragma once

#include <cstdint>

namespace korva::test {

/// What `new` gave to all threads of this process. A program that calls one of these functions gets counting
/// operators in place of the ordinary ones.  [any]
[[nodiscard]] std::uint64_t allocationsMade() noexcept;

/// Those that were not given back yet.  [any]
[[nodiscard]] std::uint64_t allocationsInUse() noexcept;

/// Their bytes, as the system's allocator rounded them up.
[[nodiscard]] std::uint64_t bytesInUse() noexcept;

/// How many allocations `operation` makes, together with what other threads do meanwhile.
template <class Operation>
[[nodiscard]] std::uint64_t allocationsOf(const Operation& operation) {
    const std::uint64_t before = allocationsMade();
    operation();
    return allocationsMade() - before;
}

/// While it lives, `new` gives this thread so many allocations and refuses all further ones. One at a time.
class AllocationLimit {
public:
    explicit AllocationLimit(std::uint64_t allowed) noexcept;
    ~AllocationLimit();
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
};

}  // namespace korva::test
