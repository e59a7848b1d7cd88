// Windows: the system's slim locks. Those of the compiler's library allocate, and have to be destroyed.
#pragma once

#include <windows.h>

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
