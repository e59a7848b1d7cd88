// What a test and the library that it loads for its threads agree on.
#pragma once

#include <atomic>

#include "platform/wait_handles.h"

namespace korva::test {

/// One thread's work, in the test's memory.
struct Errand {
    platform::WaitHandle mayEnd;         ///< The thread waits for it, in the library's code.
    std::atomic<bool> isRunning{false};  ///< Set by the thread before it waits.
    std::atomic<int> answer{0};  ///< What the library's code gives after the wait; the last that it touches.
};

inline constexpr int libraryAnswer = 42;

/// `startWaitingThread`: starts a thread in the library and lets it go. False if the system refuses one.
using StartWaitingThread = bool(Errand* errand);

/// `runThread`: the same, and joins the thread.
using RunThread = bool(Errand* errand);

}  // namespace korva::test
