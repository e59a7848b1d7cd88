// How many threads this process has.
#pragma once

#include <algorithm>
#include <cstddef>
#include <thread>

namespace korva::test {

/// As the operating system counts them; a thread that has just ended may be among them for a moment.  [any]
[[nodiscard]] std::size_t threadCount();

/// The same, to count others against: a process that has had a thread. From its first one on it may have some
/// that are not its own, a sanitizer's for instance.  [any]
[[nodiscard]] inline std::size_t threadCountAtRest() {
    std::thread([] {}).join();
    // The one just joined may still be counted.
    std::size_t least = threadCount();
    for (int look = 0; look < 100; ++look) {
        std::this_thread::yield();
        least = std::min(least, threadCount());
    }
    return least;
}

}  // namespace korva::test
