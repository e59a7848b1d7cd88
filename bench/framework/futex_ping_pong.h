// The least that a call to another thread and back can cost when both sleep.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <thread>

namespace korva::bench {

/// Two threads that wake each other with bare futexes: neither spins, queues, allocates or locks anything.
class FutexPingPong {
public:
    FutexPingPong();
    ~FutexPingPong();
    FutexPingPong(const FutexPingPong&) = delete;
    FutexPingPong& operator=(const FutexPingPong&) = delete;

    /// Wakes the other thread, which counts one up and wakes the caller, who sleeps meanwhile.
    void call();

    [[nodiscard]] pid_t targetThread() const noexcept { return target; }
    [[nodiscard]] std::uint64_t callsMade() const noexcept { return counted; }

private:
    void answerCalls();

    // Each on a cache line of its own, as they are written by different threads.
    alignas(64) std::atomic<std::uint32_t> ping{1};
    alignas(64) std::atomic<std::uint32_t> pong{0};
    alignas(64) std::uint64_t counted = 0;  // by the target; read by the caller between calls
    std::atomic<bool> ends{false};
    pid_t target = 0;
    std::thread thread;
};

}  // namespace korva::bench
