// Mutual exclusion, and sleeping under it.
#pragma once

#include "native/mutex.h"

namespace korva::platform {

// `Mutex`: for one thread at a time, not recursive; to be used with `std::lock_guard` and `std::unique_lock`.
// It can be a constant-initialised static and needs no end: threads may use it while a process takes its
// statics down. It allocates nothing.  [any, blocks]
//
// `RecursiveMutex`: for one thread at a time, which may take it again and gives it back as often. It
// allocates nothing.  [any, blocks]
//
// `ConditionVariable`: what threads sleep on while a `Mutex` is unlocked, with these members. Wakes may come
// unasked. It allocates nothing, and nobody may sleep on it when it is destroyed.
//
//     void notifyOne() noexcept;                                           [any]
//     void waitFor(std::unique_lock<Mutex>& lock, std::int64_t limitMs);   [any, blocks]  limitMs: 1 to
//     86,400,000

}  // namespace korva::platform
