// Linux: those of the standard library are as wanted.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace korva::platform {

using Mutex = std::mutex;
using RecursiveMutex = std::recursive_mutex;

class ConditionVariable {
public:
    void notifyOne() noexcept { condition.notify_one(); }
    void waitFor(std::unique_lock<Mutex>& lock, std::int64_t limitMs) {
        condition.wait_for(lock, std::chrono::milliseconds(limitMs));
    }

private:
    std::condition_variable condition;
};

}  // namespace korva::platform
