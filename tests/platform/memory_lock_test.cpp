#include "platform/memory_lock.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace korva::platform {
namespace {

TEST(LockMemory, LocksMemoryOfThisProcessAndLeavesItsContents) {
    std::vector<unsigned char> memory(10'000);
    std::iota(memory.begin(), memory.end(), static_cast<unsigned char>(0));
    const std::vector<unsigned char> before = memory;

    EXPECT_TRUE(lockMemory(memory.data(), memory.size()));

    EXPECT_EQ(memory, before);
    memory[0] = 7;
    EXPECT_EQ(memory[0], 7);
}

TEST(LockMemory, LocksCodeToo) {
    EXPECT_TRUE(lockMemory(reinterpret_cast<const void*>(&lockMemory), 1));
}

TEST(LockMemory, GivesFalseForMemoryThatIsNotThere) {
    EXPECT_FALSE(lockMemory(nullptr, 4096));
}

}  // namespace
}  // namespace korva::platform
