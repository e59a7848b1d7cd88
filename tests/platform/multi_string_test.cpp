#include "platform/multi_string.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace korva::platform {
namespace {

using namespace std::string_view_literals;

std::vector<std::string> split(std::string_view utf8) {
    const WideString text = toWide(utf8);
    WideView rest = text;
    std::vector<std::string> strings(stringCount(text));
    for (std::string& string : strings) {
        string = toUtf8(takeString(rest));
    }
    EXPECT_TRUE(rest.empty());
    return strings;
}

using Strings = std::vector<std::string>;

TEST(MultiString, TheClosingEmptyStringIsOneMore) {
    EXPECT_EQ(split("a\0bc\0\0"sv), (Strings{"a", "bc", ""}));
}

TEST(MultiString, WithoutItThereAreAsManyAsWereWritten) {
    EXPECT_EQ(split("a\0bc\0"sv), (Strings{"a", "bc"}));
}

TEST(MultiString, ALastStringWithoutItsZeroCounts) {
    EXPECT_EQ(split("a\0bc"sv), (Strings{"a", "bc"}));
    EXPECT_EQ(split("a"sv), (Strings{"a"}));
}

TEST(MultiString, ALoneZeroIsOneEmptyString) {
    EXPECT_EQ(split("\0"sv), (Strings{""}));
}

TEST(MultiString, ATextOfNoLengthHasNone) {
    EXPECT_EQ(split(""sv), (Strings{}));
}

TEST(MultiString, EmptyStringsInTheMiddleCount) {
    EXPECT_EQ(split("a\0\0b\0\0"sv), (Strings{"a", "", "b", ""}));
    EXPECT_EQ(split("\0\0\0"sv), (Strings{"", "", ""}));
}

}  // namespace
}  // namespace korva::platform
