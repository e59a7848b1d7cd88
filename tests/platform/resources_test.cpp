#include "platform/resources.h"

#include <gtest/gtest.h>

namespace korva::platform {
namespace {

TEST(TextResource, IsTheFilesText) {
    EXPECT_EQ(textResource(7), "a text\n{ with \"marks\"; \\ and %% }\n");
}

TEST(TextResource, MayBeALineBreak) {
    EXPECT_EQ(textResource(65535), "\n");
}

TEST(TextResource, IsNoneUnderAnotherNumber) {
    EXPECT_EQ(textResource(0), std::nullopt);
    EXPECT_EQ(textResource(8), std::nullopt);
    EXPECT_EQ(textResource(65534), std::nullopt);
}

TEST(TextResource, StaysWhereItIs) {
    EXPECT_EQ(textResource(7)->data(), textResource(7)->data());
}

}  // namespace
}  // namespace korva::platform
