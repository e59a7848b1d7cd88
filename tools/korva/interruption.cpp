#include "korva/interruption.h"

#include <poll.h>
#include <signal.h>

#include <array>
#include <cerrno>

#include "korva/errors.h"

namespace korva::tool {
namespace {

constexpr std::array stopSignals = {SIGINT, SIGTERM, SIGHUP};

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

/// False when the limit passes; without one it has none.
bool waitFor(int descriptor, Direction direction, const timespec* limit) {
    const HeldSignals held;
    pollfd waiting = {descriptor, static_cast<short>(direction == Direction::read ? POLLIN : POLLOUT), 0};
    while (true) {
        throwIfInterrupted();
        // Lets the signals in only while it waits.
        const int ready = ppoll(&waiting, 1, limit, &held.before);
        if (ready >= 0) {
            return ready > 0;
        }
        if (errno != EINTR) {
            fail("cannot wait for a file: {}", systemMessage(errno));
        }
    }
}

}  // namespace

void catchInterruptions() {
    for (const int signal : stopSignals) {
        catchSignal(signal);
    }
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

bool isInterrupted() {
    return raisedSignal != 0;
}

void throwIfInterrupted() {
    if (isInterrupted()) {
        throw Interrupted{raisedSignal};
    }
}

void waitUntilReady(int descriptor, Direction direction) {
    waitFor(descriptor, direction, nullptr);
}

bool waitUntilReady(int descriptor, Direction direction, int limitMs) {
    const timespec limit = {limitMs / 1000, limitMs % 1000 * 1'000'000L};
    return waitFor(descriptor, direction, &limit);
}

void pauseFor(int durationMs) {
    constexpr int noDescriptor = -1;
    waitUntilReady(noDescriptor, Direction::read, durationMs);
}

}  // namespace korva::tool
