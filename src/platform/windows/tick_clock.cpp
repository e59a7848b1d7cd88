#include "platform/tick_clock.h"

#include <windows.h>

#include <timeapi.h>

namespace korva::platform {

std::uint32_t tickClockMs() noexcept {
    return timeGetTime();
}

}  // namespace korva::platform
