// How often a program asks for memory.
#pragma once

#include <cstdint>

namespace korva::test {

/// What `new` gave to all threads of this process. A program that calls one of these functions gets counting
/// operators in place of the ordinary ones.  [any]
[[nodiscard]] std::uint64_t allocationsMade() noexcept;

/// Those that were not given back yet.  [any]
[[nodiscard]] std::uint64_t allocationsInUse() noexcept;

/// How many allocations `operation` makes, together with what other threads do meanwhile.
template <class Operation>
[[nodiscard]] std::uint64_t allocationsOf(const Operation& operation) {
    const std::uint64_t before = allocationsMade();
    operation();
    return allocationsMade() - before;
}

}  // namespace korva::test
