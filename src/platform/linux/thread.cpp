#include "platform/thread.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <pthread.h>
#include <signal.h>

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

#include "platform/linux/own_library.h"

namespace korva::platform {
namespace {

/// What a new thread begins with.
struct Start {
    Thread::Entry entry;
    void* argument;
    void* library;  ///< The thread's reference on the library of this code; null for none.
};

[[noreturn]] void raise(int error, const char* what) {
    throw std::system_error(error, std::generic_category(), what);
}

/// A new reference on the library that this code is linked into. Null in a program, which stays anyway.
void* holdOwnLibrary() {
    const char* const name = ownLibraryName();
    if (name == nullptr) {
        return nullptr;
    }
    void* const library = dlopen(name, RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) {
        raise(ENOMEM, "holding the library of a thread");
    }
    return library;
}

/// Has the reference dropped once this thread has left our code for good. Dropping the last one unmaps this
/// code, so no function of ours can do it: it would return into nothing. The C library itself calls
/// `dlclose`, as it calls the destructors of a thread's own objects: after the entry has returned, the latest
/// registered first. So ours, registered before the entry runs, comes after all those that the entry brings.
/// A destructor given to pthread_key_create would come later still: the library has none.
void dropWhenThreadEnds(void* library) noexcept {
    // The value that `dlclose` returns is left in a register that nobody reads.
    const auto drop = reinterpret_cast<void (*)(void*)>(reinterpret_cast<void*>(&dlclose));
    // The last argument tells which library has to stay until the call is over. Ours would then outlive the
    // call that is to unload it, so this names the one that `dlclose` is in.
    abi::__cxa_thread_atexit(drop, library, reinterpret_cast<void*>(&dlclose));
}

/// While it lives, a thread that is started begins with every signal blocked. Those of faults stay as they
/// are: the system ends a process whose faulting thread blocks them, past the host's own handler.
class NoSignals {
public:
    NoSignals() noexcept {
        sigset_t blocked;
        sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
            sigdelset(&blocked, fault);
        }
        pthread_sigmask(SIG_BLOCK, &blocked, &maskBefore);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr); }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

private:
    sigset_t maskBefore{};
};

/// Gives 0, or why there is no thread.
int startThread(pthread_t& handle, void* (*entry)(void*), void* argument) noexcept {
    const NoSignals guard;
    return pthread_create(&handle, nullptr, entry, argument);
}

/// `noexcept`: what leaves the entry ends the process.
void* run(void* argument) noexcept {
    const Start start = *std::unique_ptr<Start>(static_cast<Start*>(argument));
    if (start.library != nullptr) {
        dropWhenThreadEnds(start.library);
    }
    start.entry(start.argument);
    return nullptr;
}

}  // namespace

Thread::Thread(Entry entry, void* argument) {
    auto start = std::make_unique<Start>(Start{entry, argument, nullptr});
    // Taken here: by the time the new thread runs, the library could be gone.
    void* const library = start->library = holdOwnLibrary();
    if (const int error = startThread(handle, run, start.get()); error != 0) {
        if (library != nullptr) {
            dlclose(library);
        }
        raise(error, "starting a thread");
    }
    static_cast<void>(start.release());  // the thread's now
    isThread = true;
}

void Thread::join() {
    if (!isThread) {
        raise(EINVAL, "joining no thread");
    }
    if (pthread_equal(handle, pthread_self()) != 0) {
        raise(EDEADLK, "joining the own thread");
    }
    // The C library lets a joiner go after everything that it does at a thread's end, the drop included.
    if (const int error = pthread_join(handle, nullptr); error != 0) {
        raise(error, "joining a thread");
    }
    isThread = false;
}

void Thread::detach() noexcept {
    if (std::exchange(isThread, false)) {
        pthread_detach(handle);
    }
}

}  // namespace korva::platform
