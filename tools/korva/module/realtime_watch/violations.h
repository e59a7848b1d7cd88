// Where the watch of a thread and what it watches meet.
#pragma once

namespace korva::tool {

/// What a watched thread did and may not.
struct Violation {
    const char* function;  ///< Null where it is a system call.
    int systemCall;        ///< Its number, or 0.
};

/// Is called on the watched thread, and ends the process.
using ViolationHandler = void (*)(const Violation& violation) noexcept;

/// From here on the first allocation, release of memory, lock, wait, exception or system call of this thread
/// goes to `handler`, for good: the thread can't even end. Allowed are to end the process and to read the
/// monotonic clock. False if the system has no filter for system calls; then nothing is watched.
[[nodiscard]] bool watchThisThread(ViolationHandler handler) noexcept;

/// Whether this program has the functions that can be watched: without them a watch sees system calls only.
[[nodiscard]] bool functionsAreWatched() noexcept;

/// Called by what may not happen on the audio thread: a violation on a watched thread.
void forbidOnWatchedThread(const char* function) noexcept;
void forbidSystemCallOnWatchedThread(int number) noexcept;

/// From here on each system call of this thread is a violation. False if the system has no such filter.
[[nodiscard]] bool trapSystemCallsOfThisThread() noexcept;

}  // namespace korva::tool
