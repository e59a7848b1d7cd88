// The functions of the C and C++ runtime that the audio thread may not call, put before the runtime's own:
// on a watched thread they name themselves, elsewhere they do what the runtime's do.
#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>
#include <threads.h>
#include <time.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <typeinfo>

#include "korva/module/realtime_watch/violations.h"

namespace {

using korva::tool::forbidOnWatchedThread;

/// The runtime's function of a name, which it looks up once.
template <typename Function>
class Next {
public:
    constexpr explicit Next(const char* functionName, const char* functionVersion = nullptr)
        : name(functionName), version(functionVersion) {}

    Function* operator()() {
        void* known = found.load(std::memory_order_relaxed);  // One address, whoever stores it.
        if (known == nullptr) {
            known = version != nullptr ? dlvsym(RTLD_NEXT, name, version) : nullptr;
            known = known != nullptr ? known : dlsym(RTLD_NEXT, name);
            found.store(known, std::memory_order_relaxed);
        }
        return reinterpret_cast<Function*>(known);
    }

private:
    const char* name;
    const char* version;
    std::atomic<void*> found{nullptr};
};

// Constant-initialised: some are needed before any initialiser has run.
constinit Next<int(pthread_mutex_t*)> nextMutexLock("pthread_mutex_lock");
constinit Next<int(pthread_mutex_t*)> nextMutexTryLock("pthread_mutex_trylock");
constinit Next<int(pthread_mutex_t*, const timespec*)> nextMutexTimedLock("pthread_mutex_timedlock");
constinit Next<int(pthread_mutex_t*, clockid_t, const timespec*)> nextMutexClockLock(
    "pthread_mutex_clocklock");
constinit Next<int(mtx_t*)> nextStandardLock("mtx_lock");
constinit Next<int(mtx_t*)> nextStandardTryLock("mtx_trylock");
constinit Next<int(pthread_spinlock_t*)> nextSpinLock("pthread_spin_lock");
constinit Next<int(pthread_rwlock_t*)> nextReadLock("pthread_rwlock_rdlock");
constinit Next<int(pthread_rwlock_t*)> nextWriteLock("pthread_rwlock_wrlock");
constinit Next<int(pthread_cond_t*, pthread_mutex_t*)> nextConditionWait("pthread_cond_wait", "GLIBC_2.3.2");
constinit Next<int(sem_t*)> nextSemaphoreWait("sem_wait");
constinit Next<void*(std::size_t)> nextAllocateException("__cxa_allocate_exception");
constinit Next<void(void*, std::type_info*, void (*)(void*))> nextThrow("__cxa_throw");

}  // namespace

// The names are the runtime's, reserved for it, and not in our form.
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming)
#define KORVA_WATCHED extern "C" [[gnu::visibility("default")]]

// The lookup itself allocates, so these go by the other names that the C library gives them.
extern "C" {
void* __libc_malloc(std::size_t);
void* __libc_calloc(std::size_t, std::size_t);
void* __libc_realloc(void*, std::size_t);
void __libc_free(void*);
void* __libc_memalign(std::size_t, std::size_t);
}

KORVA_WATCHED void* malloc(std::size_t size) noexcept {
    forbidOnWatchedThread("malloc");
    return __libc_malloc(size);
}

KORVA_WATCHED void* calloc(std::size_t count, std::size_t size) noexcept {
    forbidOnWatchedThread("calloc");
    return __libc_calloc(count, size);
}

KORVA_WATCHED void* realloc(void* memory, std::size_t size) noexcept {
    forbidOnWatchedThread("realloc");
    return __libc_realloc(memory, size);
}

KORVA_WATCHED void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    forbidOnWatchedThread("aligned_alloc");
    return __libc_memalign(alignment, size);
}

KORVA_WATCHED void* memalign(std::size_t alignment, std::size_t size) noexcept {
    forbidOnWatchedThread("memalign");
    return __libc_memalign(alignment, size);
}

KORVA_WATCHED int posix_memalign(void** memory, std::size_t alignment, std::size_t size) noexcept {
    forbidOnWatchedThread("posix_memalign");
    *memory = __libc_memalign(alignment, size);
    return *memory == nullptr ? ENOMEM : 0;
}

KORVA_WATCHED void free(void* memory) noexcept {
    forbidOnWatchedThread("free");
    __libc_free(memory);
}

KORVA_WATCHED int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    forbidOnWatchedThread("pthread_mutex_lock");
    return nextMutexLock()(mutex);
}

KORVA_WATCHED int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
    forbidOnWatchedThread("pthread_mutex_trylock");
    return nextMutexTryLock()(mutex);
}

KORVA_WATCHED int pthread_mutex_timedlock(pthread_mutex_t* mutex, const timespec* end) noexcept {
    forbidOnWatchedThread("pthread_mutex_timedlock");
    return nextMutexTimedLock()(mutex, end);
}

KORVA_WATCHED int pthread_mutex_clocklock(pthread_mutex_t* mutex, clockid_t clock,
                                          const timespec* end) noexcept {
    forbidOnWatchedThread("pthread_mutex_clocklock");
    return nextMutexClockLock()(mutex, clock, end);
}

// The C library's own locks don't go through the ones above.
KORVA_WATCHED int mtx_lock(mtx_t* mutex) {
    forbidOnWatchedThread("mtx_lock");
    return nextStandardLock()(mutex);
}

KORVA_WATCHED int mtx_trylock(mtx_t* mutex) {
    forbidOnWatchedThread("mtx_trylock");
    return nextStandardTryLock()(mutex);
}

KORVA_WATCHED int pthread_spin_lock(pthread_spinlock_t* lock) noexcept {
    forbidOnWatchedThread("pthread_spin_lock");
    return nextSpinLock()(lock);
}

KORVA_WATCHED int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
    forbidOnWatchedThread("pthread_rwlock_rdlock");
    return nextReadLock()(lock);
}

KORVA_WATCHED int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
    forbidOnWatchedThread("pthread_rwlock_wrlock");
    return nextWriteLock()(lock);
}

KORVA_WATCHED int pthread_cond_wait(pthread_cond_t* cond, pthread_mutex_t* mutex) {
    forbidOnWatchedThread("pthread_cond_wait");
    return nextConditionWait()(cond, mutex);
}

KORVA_WATCHED int sem_wait(sem_t* sem) {
    forbidOnWatchedThread("sem_wait");
    return nextSemaphoreWait()(sem);
}

KORVA_WATCHED void* __cxa_allocate_exception(std::size_t size) noexcept {
    forbidOnWatchedThread("__cxa_allocate_exception");
    return nextAllocateException()(size);
}

KORVA_WATCHED void __cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*)) {
    forbidOnWatchedThread("__cxa_throw");
    nextThrow()(exception, type, destroy);
    __builtin_unreachable();
}
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)
