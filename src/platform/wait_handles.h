// Waiting for the first of several things of the system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "native/wait_handle.h"
#include "platform/wait_limit.h"

namespace korva::platform {

/// Something that is signalled or not, and stays so until somebody changes it. Initially not signalled. What
/// a thread did before `signal` is seen by those that `waitForHandles` let go for it.  [any]
class Event {
public:
    /// Raises `std::system_error` when the system has none left.
    Event();

    /// Nobody may wait for it, or be about to signal it.
    ~Event();
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void signal() noexcept;
    void reset() noexcept;

    /// Valid as long as this object.
    [[nodiscard]] WaitHandle handle() const noexcept { return event; }

private:
    WaitHandle event;
};

/// What `waitForHandles` takes at most, the same on every system.
inline constexpr std::size_t maxWaitHandles = 64;

/// Waits until one of `handles` is signalled (an event) or readable (a descriptor, also one whose other end
/// is closed), and gives the lowest index that is; -1 when `limitMs` milliseconds pass before. 0 or less only
/// looks, `waitForever` has no limit. Handles stay their owners', and as signalled as they are, but for a
/// kind that the wait itself resets: of those, the one whose index is given.
///
/// Raises `std::invalid_argument` for no handle or more than `maxWaitHandles`, `std::system_error` if any of
/// them is no open handle.  [any, blocks]
int waitForHandles(std::span<const WaitHandle> handles, std::int64_t limitMs);

}  // namespace korva::platform
