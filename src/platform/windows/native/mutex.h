// Windows: the system's slim locks. Those of the compiler's library allocate, and have to be destroyed.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <mutex>

namespace korva::platform {

class Mutex {
public:
    constexpr Mutex() noexcept = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() noexcept { AcquireSRWLockExclusive(&slimLock); }
    bool try_lock() noexcept { return TryAcquireSRWLockExclusive(&slimLock) != 0; }
    void unlock() noexcept { ReleaseSRWLockExclusive(&slimLock); }

private:
    friend class ConditionVariable;

    SRWLOCK slimLock = SRWLOCK_INIT;
};

class RecursiveMutex {
public:
    void lock() noexcept {
        const DWORD self = GetCurrentThreadId();
        // Another thread's number is never this one's, so a stale one does no harm.
        if (owner.load(std::memory_order_relaxed) != self) {
            mutex.lock();
            owner.store(self, std::memory_order_relaxed);
        }
        ++depth;
    }
    void unlock() noexcept {
        if (--depth == 0) {
            owner.store(0, std::memory_order_relaxed);
            mutex.unlock();
        }
    }

private:
    Mutex mutex;
    std::atomic<DWORD> owner{0};  ///< 0 is no thread's number.
    std::uint32_t depth = 0;      ///< The owner's.
};

class ConditionVariable {
public:
    constexpr ConditionVariable() noexcept = default;
    ConditionVariable(const ConditionVariable&) = delete;
    ConditionVariable& operator=(const ConditionVariable&) = delete;

    void notifyOne() noexcept { WakeConditionVariable(&condition); }
    void waitFor(std::unique_lock<Mutex>& lock, std::int64_t limitMs) noexcept {
        SleepConditionVariableSRW(&condition, &lock.mutex()->slimLock, static_cast<DWORD>(limitMs), 0);
    }

private:
    CONDITION_VARIABLE condition = CONDITION_VARIABLE_INIT;
};

}  // namespace korva::platform
