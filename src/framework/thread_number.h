// A number for each thread.
#pragma once

#include <cstdint>

namespace korva::framework {

namespace detail {

// Known to be set without a constructor and dropped without a destructor: a library with a thread-local
// destructor can't be unloaded safely.
extern constinit thread_local std::uint32_t threadNumber;

std::uint32_t numberThisThread() noexcept;

}  // namespace detail

/// The calling thread's number, 1 or more. The system's identifiers come back when their threads have ended,
/// and a stranger could then pass for an owner; this number doesn't come back before 2^32 others.  [any]
inline std::uint32_t currentThreadNumber() noexcept {
    const std::uint32_t number = detail::threadNumber;
    return number != 0 ? number : detail::numberThisThread();
}

}  // namespace korva::framework
