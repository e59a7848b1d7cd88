// A gate between the threads of a test.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace korva::test {

/// Closed until somebody opens it; then it stays open. It is built on nothing of ours, so that a fault there
/// can't hide itself.  [any]
class OneTimeGate {
public:
    void open() {
        const std::lock_guard guard(mutex);
        isOpen = true;
        changed.notify_all();
    }

    /// Waits for the gate; false if it is still closed after a time that no healthy run needs.
    [[nodiscard]] bool pass() { return passWithin(std::chrono::seconds(20)); }

    /// For a gate that has to stay closed: a false is what the test expects.
    [[nodiscard]] bool passWithin(std::chrono::milliseconds limit) {
        std::unique_lock guard(mutex);
        return changed.wait_for(guard, limit, [this] { return isOpen; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool isOpen = false;
};

}  // namespace korva::test
