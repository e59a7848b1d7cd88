#include "tests/system/support/own_event.h"

#include <windows.h>

#include <cstdint>
#include <stdexcept>

namespace korva::test {

OwnEvent::OwnEvent() : event(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (event == nullptr) {
        throw std::runtime_error("no event");
    }
}

OwnEvent::~OwnEvent() {
    CloseHandle(event);
}

HANDLE closedHandle() {
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(0x7FFFFFC));
}

}  // namespace korva::test
