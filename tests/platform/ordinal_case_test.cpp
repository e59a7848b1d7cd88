#include "platform/ordinal_case.h"

#include <gtest/gtest.h>

#include <string>

namespace korva::platform {
namespace {

bool equal(std::string_view a, std::string_view b) {
    return equalIgnoringCase(toWide(a), toWide(b));
}

TEST(OrdinalCase, TakesUpperAndLowerCaseForTheSame) {
    EXPECT_TRUE(equal("{0.0.0.ABCDEF}.xyz", "{0.0.0.abcdef}.XYZ"));
    EXPECT_TRUE(equal("", ""));
}

TEST(OrdinalCase, KnowsTheCaseOfOtherScripts) {
    EXPECT_TRUE(equal("\303\266", "\303\226"));  // o with two dots
    EXPECT_TRUE(equal("\317\211", "\316\251"));  // omega
    EXPECT_TRUE(equal("\321\217", "\320\257"));  // Cyrillic ya
}

TEST(OrdinalCase, TellsDifferentTextsApart) {
    EXPECT_FALSE(equal("a", "b"));
    EXPECT_FALSE(equal("a", "aa"));
    EXPECT_FALSE(equal("aa", "a"));
    EXPECT_FALSE(equal("a", ""));
    EXPECT_FALSE(equal("", "a"));
    EXPECT_FALSE(equal("o", "\303\266"));
}

TEST(OrdinalCase, DoesNotGoByWhatIsNearALetter) {
    EXPECT_FALSE(equal("[", "{")) << "they are as far apart as two cases";
    EXPECT_FALSE(equal("@", "`"));
    EXPECT_FALSE(equal("\303\227", "\303\267")) << "signs of multiplication and division";
}

TEST(OrdinalCase, ComparesUnitByUnit) {
    EXPECT_FALSE(equal("ss", "\303\237")) << "no letter stands for two";
    WideString withNull = toWide("a");
    withNull.push_back(0);
    EXPECT_FALSE(equalIgnoringCase(withNull, toWide("a")));
    EXPECT_TRUE(equalIgnoringCase(withNull, withNull));
}

TEST(OrdinalCase, HalvesOfAPairAreEqualToThemselvesOnly) {
    const WideString high(1, static_cast<WCHAR>(0xD83C));
    const WideString low(1, static_cast<WCHAR>(0xDFB5));
    EXPECT_TRUE(equalIgnoringCase(high, high));
    EXPECT_FALSE(equalIgnoringCase(high, low));
    EXPECT_TRUE(equal("\360\237\216\265", "\360\237\216\265"));
}

}  // namespace
}  // namespace korva::platform
