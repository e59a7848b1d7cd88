// Threads that keep the library loaded in which they run.
#pragma once

#include <utility>

#include "native/thread_handle.h"

namespace korva::platform {

/// A thread of ours. The library whose code runs on it stays loaded until the thread has left that code, so a
/// host that unloads the library meanwhile does no harm: the last such thread unloads it.
///
/// A signal that the host's process gets reaches a thread of the host: those of ours block them all, but for
/// the signals of faults.
///
/// Different objects may be used at once, one object by one thread at a time.  [any]
class Thread {
public:
    using Entry = void (*)(void* argument);

    /// No thread.
    Thread() noexcept = default;

    /// Starts a thread that runs `entry(argument)`. An exception that leaves `entry` ends the process
    /// (`std::terminate`). Raises `std::system_error` where the system refuses a thread, `std::bad_alloc`
    /// without memory; nothing runs then, and nothing keeps the library loaded.  [any, blocks]
    Thread(Entry entry, void* argument);

    /// Takes the thread over; `other` is none afterwards. A thread that this object was before is detached.
    Thread(Thread&& other) noexcept : handle(other.handle), isThread(std::exchange(other.isThread, false)) {}
    Thread& operator=(Thread&& other) noexcept {
        Thread taken(std::move(other));
        std::swap(handle, taken.handle);
        std::swap(isThread, taken.isThread);
        return *this;
    }

    /// Detaches a thread that nobody joined.
    ~Thread() { detach(); }

    /// Whether this is a thread that was neither joined nor detached; it may have ended long since.
    [[nodiscard]] bool joinable() const noexcept { return isThread; }

    /// Waits until the thread has ended and holds the library no more; this is no thread then. Raises
    /// `std::system_error`, and changes nothing, with `std::errc::invalid_argument` if this is no thread,
    /// with `resource_deadlock_would_occur` on the thread itself. Must not be called while this thread loads
    /// or unloads a library (in the constructor of a static object, say): an ending thread waits for that.
    /// [any, blocks]
    void join();

    /// Lets the thread run on by itself; this is no thread then. Does nothing if it was none.
    void detach() noexcept;

private:
    ThreadHandle handle{};
    bool isThread = false;  ///< Whether `handle` is a thread's.
};

}  // namespace korva::platform
