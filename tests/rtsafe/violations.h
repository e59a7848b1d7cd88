// Where the watch of a thread and the functions that it watches meet.
#pragma once

namespace korva::test {

/// Turns the watch of this thread on, for good.
void watchThisThread() noexcept;

/// Called by what may not happen on the audio thread: on a watched thread, names it and ends the process.
void forbidOnWatchedThread(const char* name) noexcept;
void forbidSystemCallOnWatchedThread(int number) noexcept;

/// From here on each system call of this thread is a violation. False if the system has no such filter.
[[nodiscard]] bool trapSystemCallsOfThisThread() noexcept;

}  // namespace korva::test
