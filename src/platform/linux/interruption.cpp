#include "platform/interruption.h"

#include <poll.h>
#include <signal.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "platform/wait_limit.h"

namespace korva::platform {
namespace {

constexpr std::array stopSignals = {SIGINT, SIGTERM, SIGHUP};
static_assert(SIGINT == keyboardInterruption);

volatile sig_atomic_t raisedSignal = 0;

extern "C" void raiseFlag(int signal) {
    raisedSignal = signal;
}

void catchSignal(int signal) {
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) {
        return;  // nohup, or a job in the background
    }
    // No SA_RESTART: a call that waits has to come back for the flag to be seen.
    struct sigaction action {};
    action.sa_handler = raiseFlag;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

/// Holds the stop signals back while it lives.
class HeldSignals {
public:
    HeldSignals() {
        sigset_t stop;
        sigemptyset(&stop);
        for (const int signal : stopSignals) {
            sigaddset(&stop, signal);
        }
        pthread_sigmask(SIG_BLOCK, &stop, &before);
    }
    ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &before, nullptr); }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;

    sigset_t before;
};

/// What is left of a limit; `ppoll` takes none as a null.
const timespec* timeLeft(const WaitLimit& limit, bool isLimited, timespec& time) {
    constexpr std::int64_t longestMs = 24 * 60 * 60 * 1000;
    const std::int64_t leftMs = limit.sliceMs(longestMs);
    time = {leftMs / 1000, leftMs % 1000 * 1'000'000L};
    return isLimited ? &time : nullptr;
}

}  // namespace

void catchInterruptions() {
    for (const int signal : stopSignals) {
        catchSignal(signal);
    }
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

int interruption() noexcept {
    return raisedSignal;
}

Wait waitUntilReady(WaitHandle handle, Direction direction, std::int64_t limitMs) {
    const HeldSignals held;
    const WaitLimit limit(limitMs);
    pollfd waiting = {handle, static_cast<short>(direction == Direction::read ? POLLIN : POLLOUT), 0};
    while (interruption() == 0) {
        timespec time{};
        // Lets the signals in only while it waits.
        const int ready = ppoll(&waiting, 1, timeLeft(limit, limitMs != waitForever, time), &held.before);
        if (ready > 0) {
            return Wait::ready;
        }
        if (ready == 0 && limit.hasPassed()) {
            return Wait::limitPassed;
        }
        if (ready < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "ppoll");
        }
    }
    return Wait::interrupted;
}

Wait pauseFor(std::int64_t durationMs) {
    constexpr WaitHandle noDescriptor = -1;
    return waitUntilReady(noDescriptor, Direction::read, durationMs);
}

}  // namespace korva::platform
