// Whether a thread of this process sleeps.
#pragma once

#include <sys/types.h>

namespace korva::bench {

/// What the kernel says about one thread.  [one thread]
class ThreadState {
public:
    explicit ThreadState(pid_t thread);
    ~ThreadState();
    ThreadState(const ThreadState&) = delete;
    ThreadState& operator=(const ThreadState&) = delete;

    /// Keeps the calling thread busy until the other one sleeps in the kernel, and at least for 200
    /// microseconds: much longer than anybody here spins before a sleep, and the same for all. Raises
    /// std::runtime_error if the thread isn't asleep after 20 seconds.
    void waitUntilAsleep() const;

private:
    [[nodiscard]] bool isAsleep() const;

    int file;
};

}  // namespace korva::bench
