#include "framework/server_lock.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>

namespace korva::framework {
namespace {

TEST(ServerLock, IsHeldFromTheFirstToTheLast) {
    EXPECT_FALSE(ServerLock::isHeld());
    std::optional<ServerLock> first(std::in_place);
    EXPECT_TRUE(ServerLock::isHeld());
    std::optional<ServerLock> second(std::in_place);
    first.reset();
    EXPECT_TRUE(ServerLock::isHeld());
    second.reset();
    EXPECT_FALSE(ServerLock::isHeld());
}

}  // namespace
}  // namespace korva::framework
