#include "platform/processor_count.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <bit>

namespace korva::platform {
namespace {

TEST(ConfinedProcessorCount, CountsThoseThatTheProcessMayRunOn) {
    DWORD_PTR allowed = 0;
    DWORD_PTR ofSystem = 0;
    ASSERT_NE(GetProcessAffinityMask(GetCurrentProcess(), &allowed, &ofSystem), 0);
    EXPECT_EQ(processorCount(), static_cast<unsigned>(std::popcount(allowed)));

    ASSERT_NE(SetProcessAffinityMask(GetCurrentProcess(), allowed & (~allowed + 1)), 0);
    const unsigned confined = processorCount();
    SetProcessAffinityMask(GetCurrentProcess(), allowed);

    EXPECT_EQ(confined, 1u);
}

}  // namespace
}  // namespace korva::platform
