// Whether a thread of this process sleeps.
#pragma once

#include <sys/types.h>

#include <deque>

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

/// All threads of the process that there are at first, but for the calling one.  [one thread]
class OtherThreads {
public:
    OtherThreads();
    /// Waits for one after the other: those that slept are to stay asleep until they are called.
    void waitUntilAsleep() const;

private:
    std::deque<ThreadState> states;
};

}  // namespace korva::bench
