// An event as a host hands it to an audio object.
#pragma once

#include "platform/published/base_types.h"

namespace korva::test {

/// An event of the system's, closed with this object.
class OwnEvent {
public:
    OwnEvent();
    ~OwnEvent();
    OwnEvent(const OwnEvent&) = delete;
    OwnEvent& operator=(const OwnEvent&) = delete;

    [[nodiscard]] HANDLE handle() const noexcept { return event; }

private:
    HANDLE event;
};

/// What is no open handle.
[[nodiscard]] HANDLE closedHandle();

}  // namespace korva::test
