// How much memory a thread gets from `new`.
#pragma once

#include <cstddef>

namespace korva::bench {

/// Counts while it lives; one at a time in a thread. Outside of it `new` and `delete` cost what they always
/// do.
class CountedMemory {
public:
    CountedMemory() noexcept;
    ~CountedMemory();
    CountedMemory(const CountedMemory&) = delete;
    CountedMemory& operator=(const CountedMemory&) = delete;

    /// The bytes that the thread has allocated since and not freed again, as the allocator rounded them up.
    /// Only what was allocated since may be freed.
    [[nodiscard]] std::ptrdiff_t liveBytes() const noexcept;
};

}  // namespace korva::bench
