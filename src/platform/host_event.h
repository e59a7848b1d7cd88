// An event that a host wants signalled.
#pragma once

#include "platform/published/base_types.h"

namespace korva::platform {

/// Our own handle to an event of the host's, or none. On Linux a host's HANDLE is the number of an event's
/// descriptor, and 0 is none.
class HostEvent {
public:
    HostEvent() noexcept = default;
    HostEvent(const HostEvent&) = delete;
    HostEvent& operator=(const HostEvent&) = delete;
    ~HostEvent() { release(); }

    /// Drops the handle at hand and takes another one to `event`, which stays the host's. S_OK; or why there
    /// is none now: E_HANDLE for what is no open handle.  [any]
    [[nodiscard]] HRESULT duplicate(HANDLE event) noexcept;

    void release() noexcept;

    [[nodiscard]] HANDLE handle() const noexcept { return own; }

private:
    HANDLE own = nullptr;
};

}  // namespace korva::platform
