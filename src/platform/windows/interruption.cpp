#include "platform/interruption.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <system_error>

#include "platform/windows/blocking_call.h"

namespace korva::platform {
namespace {

constexpr int closeInterruption = 15;  // as a system that goes down asks its programs

std::atomic<int> raised = 0;
HANDLE raisedEvent = nullptr;  // There as long as the process, once interruptions are caught.

// Held by whoever begins or ends a call that waits, and by the handler while it cancels it: so the call that
// is cancelled is never the next one.
SRWLOCK callLock = SRWLOCK_INIT;
HANDLE waitingThread = nullptr;
bool isInCall = false;

class HeldLock {
public:
    HeldLock() noexcept { AcquireSRWLockExclusive(&callLock); }
    ~HeldLock() { ReleaseSRWLockExclusive(&callLock); }
    HeldLock(const HeldLock&) = delete;
    HeldLock& operator=(const HeldLock&) = delete;
};

bool cancelCall() {
    const HeldLock lock;
    if (isInCall) {
        CancelSynchronousIo(waitingThread);
    }
    return isInCall;
}

/// The system has a thread of its own for this.
BOOL WINAPI raiseFlag(DWORD event) {
    const bool isKey = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    raised = isKey ? keyboardInterruption : closeInterruption;
    SetEvent(raisedEvent);
    // A call that is about to begin its wait isn't there to be cancelled yet.
    while (cancelCall()) {
        Sleep(1);
    }
    if (!isKey) {
        Sleep(INFINITE);  // The process ends when this returns, or when it is done before.
    }
    return TRUE;
}

DWORD sliceOf(std::int64_t limitMs) {
    return limitMs == waitForever ? INFINITE
                                  : static_cast<DWORD>(std::clamp<std::int64_t>(limitMs, 0, INFINITE - 1));
}

}  // namespace

BlockingCall::BlockingCall() {
    const HeldLock lock;
    isInCall = raised == 0;
    isAllowed = isInCall;
}

BlockingCall::~BlockingCall() {
    const HeldLock lock;
    isInCall = false;
}

void catchInterruptions() {
    raisedEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &waitingThread, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    SetConsoleCtrlHandler(raiseFlag, TRUE);
}

int interruption() noexcept {
    return raised;
}

Wait waitUntilReady(WaitHandle handle, Direction direction, std::int64_t limitMs) {
    if (interruption() != 0) {
        return Wait::interrupted;
    }
    if (direction == Direction::write) {
        return Wait::ready;
    }
    // Of several that are signalled the first one counts.
    const std::array handles = {raisedEvent, handle};
    const bool isCaught = raisedEvent != nullptr;
    const auto waited = std::span(handles).subspan(isCaught ? 0 : 1);
    const int first = waitForHandles(waited, limitMs);
    if (first < 0) {
        return Wait::limitPassed;
    }
    return isCaught && first == 0 ? Wait::interrupted : Wait::ready;
}

Wait pauseFor(std::int64_t durationMs) {
    if (raisedEvent == nullptr) {
        Sleep(sliceOf(durationMs));
        return Wait::limitPassed;
    }
    return waitForHandles({&raisedEvent, 1}, durationMs) == 0 ? Wait::interrupted : Wait::limitPassed;
}

}  // namespace korva::platform
