// A call of the system's that an interruption ends.
#pragma once

namespace korva::platform {

/// While it lives, an interruption cancels what the thread that caught interruptions waits for, which then
/// fails with ERROR_OPERATION_ABORTED. One at a time, on that thread.
class BlockingCall {
public:
    BlockingCall();
    ~BlockingCall();
    BlockingCall(const BlockingCall&) = delete;
    BlockingCall& operator=(const BlockingCall&) = delete;

    /// False if an interruption came before: the call must not be made, since nothing would end it.
    explicit operator bool() const noexcept { return isAllowed; }

private:
    bool isAllowed;
};

}  // namespace korva::platform
