#include "platform/system_version.h"

#include <gtest/gtest.h>

namespace korva::platform {
namespace {

TEST(SystemVersion, IsNoneWhereTheSystemIsNotWindows) {
    EXPECT_EQ(systemVersion(), SystemVersion{});
}

}  // namespace
}  // namespace korva::platform
