#include "tests/system/support/own_event.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <stdexcept>

namespace korva::test {
namespace {

HANDLE asHandle(int descriptor) {
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(descriptor));
}

int newEvent() {
    const int descriptor = eventfd(0, EFD_CLOEXEC);
    if (descriptor < 0) {
        throw std::runtime_error("no event");
    }
    return descriptor;
}

}  // namespace

OwnEvent::OwnEvent() : event(asHandle(newEvent())) {}

OwnEvent::~OwnEvent() {
    close(static_cast<int>(reinterpret_cast<std::intptr_t>(event)));
}

// A number above all that a process may have open.
HANDLE closedHandle() {
    return asHandle(0x7FFFFFF);
}

}  // namespace korva::test
