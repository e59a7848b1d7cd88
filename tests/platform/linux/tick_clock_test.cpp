#include "platform/tick_clock.h"

#include <gtest/gtest.h>

#include <ctime>

namespace korva::platform {
namespace {

std::uint32_t cutMonotonicMs() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const std::uint64_t ms =
        static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000;
    return static_cast<std::uint32_t>(ms % 0x1'0000'0000U);
}

TEST(TickClockHere, IsTheMonotonicClockWithoutItsHighBits) {
    const std::uint32_t before = cutMonotonicMs();
    const std::uint32_t now = tickClockMs();
    const std::uint32_t after = cutMonotonicMs();
    EXPECT_LE(now - before, after - before);
}

}  // namespace
}  // namespace korva::platform
