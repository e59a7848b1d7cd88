// Waiting for what another thread will bring about.
#pragma once

#include <chrono>
#include <thread>

namespace korva::test {

/// Looks until `holds()` does; false if it still doesn't after a time that no healthy run needs.  [any]
template <class Condition>
[[nodiscard]] bool waitUntil(const Condition& holds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

}  // namespace korva::test
