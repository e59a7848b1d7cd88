#include "platform/wait_handles.h"

#include <windows.h>

#include <stdexcept>
#include <system_error>

namespace korva::platform {
namespace {

static_assert(maxWaitHandles == MAXIMUM_WAIT_OBJECTS);

[[noreturn]] void raiseLastError(const char* what) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), what);
}

}  // namespace

Event::Event() : event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (event == nullptr) {
        raiseLastError("making an event");
    }
}

Event::~Event() {
    CloseHandle(event);
}

void Event::signal() noexcept {
    SetEvent(event);
}

void Event::reset() noexcept {
    ResetEvent(event);
}

int waitForHandles(std::span<const WaitHandle> handles, std::int64_t limitMs) {
    if (handles.empty() || handles.size() > maxWaitHandles) {
        throw std::invalid_argument("waiting for handles: no handle, or too many");
    }
    const WaitLimit limit(limitMs);
    const auto count = static_cast<DWORD>(handles.size());
    for (;;) {
        // The longest number stands for no limit. The system counts in ticks and may come back a little
        // early, so its word alone doesn't end the wait.
        const auto slice = static_cast<DWORD>(limit.sliceMs(INFINITE - 1));
        const DWORD result = WaitForMultipleObjects(count, handles.data(), FALSE, slice);
        if (result == WAIT_FAILED) {
            raiseLastError("waiting for handles");
        }
        if (result < WAIT_OBJECT_0 + count) {
            return static_cast<int>(result - WAIT_OBJECT_0);
        }
        // A mutex whose owner ended without releasing it is signalled too.
        if (result >= WAIT_ABANDONED_0 && result < WAIT_ABANDONED_0 + count) {
            return static_cast<int>(result - WAIT_ABANDONED_0);
        }
        if (limit.hasPassed()) {
            return -1;
        }
    }
}

}  // namespace korva::platform
