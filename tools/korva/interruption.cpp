#include "korva/interruption.h"

#include <system_error>

#include "korva/errors.h"

namespace korva::tool {
namespace {

/// Whether it was worth while to wait.
bool isReady(platform::Wait end) {
    if (end == platform::Wait::interrupted) {
        throwIfInterrupted();
    }
    return end == platform::Wait::ready;
}

bool waitFor(platform::WaitHandle handle, Direction direction, std::int64_t limitMs) {
    try {
        return isReady(platform::waitUntilReady(handle, direction, limitMs));
    } catch (const std::system_error& error) {
        fail("cannot wait for a file: {}", error.code().message());
    }
}

}  // namespace

bool isInterrupted() {
    return platform::interruption() != 0;
}

void throwIfInterrupted() {
    if (isInterrupted()) {
        throw Interrupted{platform::interruption()};
    }
}

void waitUntilReady(platform::WaitHandle handle, Direction direction) {
    waitFor(handle, direction, platform::waitForever);
}

bool waitUntilReady(platform::WaitHandle handle, Direction direction, int limitMs) {
    return waitFor(handle, direction, limitMs);
}

void pauseFor(int durationMs) {
    isReady(platform::pauseFor(durationMs));
}

}  // namespace korva::tool
