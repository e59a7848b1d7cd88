#include "platform/thread.h"

#include <windows.h>

#include <memory>
#include <system_error>
#include <utility>

namespace korva::platform {
namespace {

/// What a new thread begins with.
struct Start {
    Thread::Entry entry;
    void* argument;
    HMODULE module;  ///< The thread's reference on the module of this code.
};

[[noreturn]] void raiseLastError(const char* what) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

/// A new reference on the module that this code is linked into. A program counts none, and takes it alike.
HMODULE holdOwnModule() {
    HMODULE module = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, reinterpret_cast<LPCWSTR>(&holdOwnModule),
                           &module) == 0) {
        raiseLastError("holding the module of a thread");
    }
    return module;
}

/// `noexcept`: what leaves the entry ends the process.
DWORD WINAPI run(void* argument) noexcept {
    const Start start = *std::unique_ptr<Start>(static_cast<Start*>(argument));
    start.entry(start.argument);
    // Dropping the last reference unmaps this code, so nothing may return to it: the system drops it and ends
    // the thread in one call.
    FreeLibraryAndExitThread(start.module, 0);
}

}  // namespace

Thread::Thread(Entry entry, void* argument) {
    auto start = std::make_unique<Start>(Start{entry, argument, nullptr});
    // Taken here: by the time the new thread runs, the module could be gone.
    HMODULE const module = start->module = holdOwnModule();
    // The C library keeps what belongs to a thread from its first use to the system's notice of its end, so
    // it needs no start of its own.
    handle = CreateThread(nullptr, 0, run, start.get(), 0, nullptr);
    if (handle == nullptr) {
        const DWORD error = GetLastError();
        FreeLibrary(module);
        throw std::system_error(static_cast<int>(error), std::system_category(), "starting a thread");
    }
    static_cast<void>(start.release());  // the thread's now
    isThread = true;
}

void Thread::join() {
    if (!isThread) {
        throw std::system_error(std::make_error_code(std::errc::invalid_argument), "joining no thread");
    }
    if (GetThreadId(handle) == GetCurrentThreadId()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                                "joining the own thread");
    }
    if (WaitForSingleObject(handle, INFINITE) != WAIT_OBJECT_0) {
        raiseLastError("joining a thread");
    }
    detach();
}

void Thread::detach() noexcept {
    if (std::exchange(isThread, false)) {
        CloseHandle(handle);
    }
}

}  // namespace korva::platform
