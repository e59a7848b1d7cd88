#include "platform/tick_clock.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <timeapi.h>

namespace korva::platform {
namespace {

TEST(TickClockHere, IsTheSystemsTime) {
    const DWORD before = timeGetTime();
    const std::uint32_t now = tickClockMs();
    const DWORD after = timeGetTime();
    EXPECT_LE(now - before, after - before);
}

}  // namespace
}  // namespace korva::platform
