// What a watch of the registry tells its owner by.
#pragma once

#include <mutex>
#include <utility>

#include "platform/mutex.h"
#include "platform/wait_handles.h"

namespace korva::platform::embedded {

/// An event that also knows whether it is signalled.  [any]
class WatchSignal {
public:
    void signal() noexcept {
        const std::lock_guard guard(mutex);
        isSignalled = true;
        event.signal();
    }

    /// Whether it was signalled. It isn't afterwards.
    bool take() noexcept {
        const std::lock_guard guard(mutex);
        event.reset();
        return std::exchange(isSignalled, false);
    }

    [[nodiscard]] WaitHandle handle() const noexcept { return event.handle(); }

private:
    Mutex mutex;
    Event event;
    bool isSignalled = false;
};

}  // namespace korva::platform::embedded
