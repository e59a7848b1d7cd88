#include "platform/wait_handles.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace korva::platform {
namespace {

/// Raised before each signal, read after each wait. The kernel orders memory between the two as well, but the
/// language knows nothing of that: this makes it a promise that compilers and sanitizers see.
std::atomic<unsigned> signalCount{0};

[[noreturn]] void raise(int error, const char* what) {
    throw std::system_error(error, std::generic_category(), what);
}

using Polled = std::span<pollfd>;

void fill(Polled polled, std::span<const WaitHandle> handles) {
    for (std::size_t i = 0; i < handles.size(); ++i) {
        // The kernel passes over a negative one, as if it were never readable.
        if (handles[i] < 0) {
            raise(EBADF, "waiting for handles");
        }
        polled[i] = pollfd{.fd = handles[i], .events = POLLIN, .revents = 0};
    }
}

int lowestReady(Polled polled) {
    int lowest = -1;
    for (std::size_t i = polled.size(); i-- > 0;) {
        if ((polled[i].revents & POLLNVAL) != 0) {
            raise(EBADF, "waiting for handles");
        }
        if (polled[i].revents != 0) {
            lowest = static_cast<int>(i);
        }
    }
    return lowest;
}

}  // namespace

Event::Event() : event(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    if (event < 0) {
        raise(errno, "making an event");
    }
}

Event::~Event() {
    close(event);
}

void Event::signal() noexcept {
    signalCount.fetch_add(1, std::memory_order_release);
    // Refused only when the count is at its end, and then it is readable.
    static_cast<void>(eventfd_write(event, 1));
}

void Event::reset() noexcept {
    // Reading takes the whole count; refused only when it is zero.
    eventfd_t count = 0;
    static_cast<void>(eventfd_read(event, &count));
}

int waitForHandles(std::span<const WaitHandle> handles, std::int64_t limitMs) {
    if (handles.empty() || handles.size() > maxWaitHandles) {
        throw std::invalid_argument("waiting for handles: no handle, or too many");
    }
    const WaitLimit limit(limitMs);
    std::array<pollfd, maxWaitHandles> storage;
    const Polled polled(storage.data(), handles.size());
    fill(polled, handles);
    for (;;) {
        const auto slice = static_cast<int>(limit.sliceMs(std::numeric_limits<int>::max()));
        const int ready = poll(polled.data(), polled.size(), slice);
        if (ready > 0) {
            signalCount.load(std::memory_order_acquire);
            return lowestReady(polled);
        }
        if (ready < 0 && errno != EINTR) {
            raise(errno, "waiting for handles");
        }
        if (ready == 0 && limit.hasPassed()) {
            return -1;
        }
    }
}

}  // namespace korva::platform
