#include "platform/tick_clock.h"

#include <ctime>

namespace korva::platform {

std::uint32_t tickClockMs() noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint32_t>(now.tv_sec * 1000 + now.tv_nsec / 1'000'000);
}

}  // namespace korva::platform
