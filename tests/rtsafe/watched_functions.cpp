// The functions of the C and C++ runtime that the audio thread may not call, put before the runtime's own:
// on a watched thread they name themselves, elsewhere they do what the runtime's do.
#include <dlfcn.h>
#include <pthread.h>
#include <semaphore.h>

#include <cstddef>
#include <typeinfo>

#include "tests/rtsafe/violations.h"

namespace {

using korva::test::forbidOnWatchedThread;

/// The runtime's function of that name. Looked up at each call, as some are needed before any initialiser
/// has run; tests don't call them often.
template <typename Function>
Function* next(const char* name, const char* version = nullptr) {
    void* const found = version != nullptr ? dlvsym(RTLD_NEXT, name, version) : dlsym(RTLD_NEXT, name);
    return reinterpret_cast<Function*>(found);
}

}  // namespace

// The names are the runtime's, reserved for it, and not in our form.
// NOLINTBEGIN(bugprone-reserved-identifier, readability-identifier-naming)
#define KORVA_WATCHED extern "C" [[gnu::visibility("default")]]

// The lookup itself allocates, so these four go by the other names that the C library gives them.
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

KORVA_WATCHED void free(void* memory) noexcept {
    forbidOnWatchedThread("free");
    __libc_free(memory);
}

KORVA_WATCHED int pthread_mutex_lock(pthread_mutex_t* mutex) noexcept {
    forbidOnWatchedThread("pthread_mutex_lock");
    return next<int(pthread_mutex_t*)>("pthread_mutex_lock")(mutex);
}

KORVA_WATCHED int pthread_mutex_trylock(pthread_mutex_t* mutex) noexcept {
    forbidOnWatchedThread("pthread_mutex_trylock");
    return next<int(pthread_mutex_t*)>("pthread_mutex_trylock")(mutex);
}

KORVA_WATCHED int pthread_rwlock_rdlock(pthread_rwlock_t* lock) noexcept {
    forbidOnWatchedThread("pthread_rwlock_rdlock");
    return next<int(pthread_rwlock_t*)>("pthread_rwlock_rdlock")(lock);
}

KORVA_WATCHED int pthread_rwlock_wrlock(pthread_rwlock_t* lock) noexcept {
    forbidOnWatchedThread("pthread_rwlock_wrlock");
    return next<int(pthread_rwlock_t*)>("pthread_rwlock_wrlock")(lock);
}

KORVA_WATCHED int pthread_cond_wait(pthread_cond_t* cond, pthread_mutex_t* mutex) {
    forbidOnWatchedThread("pthread_cond_wait");
    return next<int(pthread_cond_t*, pthread_mutex_t*)>("pthread_cond_wait", "GLIBC_2.3.2")(cond, mutex);
}

KORVA_WATCHED int sem_wait(sem_t* sem) {
    forbidOnWatchedThread("sem_wait");
    return next<int(sem_t*)>("sem_wait")(sem);
}

KORVA_WATCHED void* __cxa_allocate_exception(std::size_t size) noexcept {
    forbidOnWatchedThread("__cxa_allocate_exception");
    return next<void*(std::size_t)>("__cxa_allocate_exception")(size);
}

KORVA_WATCHED void __cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*)) {
    forbidOnWatchedThread("__cxa_throw");
    next<void(void*, std::type_info*, void (*)(void*))>("__cxa_throw")(exception, type, destroy);
    __builtin_unreachable();
}
// NOLINTEND(bugprone-reserved-identifier, readability-identifier-naming)
