#include "platform/property_key.h"

#include <gtest/gtest.h>

#include <string>

namespace korva::platform {
namespace {

constexpr GUID selection = {0x6DCC1AC8, 0x4A3C, 0x4A98, {0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63}};
constexpr const char* selectionText = "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}";

TEST(UpperGuidText, HasCapitals) {
    EXPECT_EQ(upperGuidText({0x6DCC1AC8, 0x4A3C, 0x4A98, {0xA3, 0xA7, 0xF9, 0x67, 0x12, 0x7D, 0x57, 0x63}}),
              "{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763}");
}

TEST(PropertyKey, AGuidsTextIsInLowerCaseWithBracesAndHyphens) {
    EXPECT_EQ(guidText(selection), selectionText);
    EXPECT_EQ(guidText(GUID{}), "{00000000-0000-0000-0000-000000000000}");
}

TEST(PropertyKey, AKeysTextIsTheGuidACommaAndTheDecimalNumber) {
    EXPECT_EQ(KeyToText({selection, 7}), std::string(selectionText) + ",7");
    EXPECT_EQ(KeyToText({selection, 0}), std::string(selectionText) + ",0");
    EXPECT_EQ(KeyToText({selection, 0xFFFFFFFF}), std::string(selectionText) + ",4294967295");
}

TEST(PropertyKey, AGuidIsReadInEveryOrdinaryForm) {
    for (const char* const text :
         {selectionText, "{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763}", "6dcc1ac84a3c4a98a3a7f967127d5763",
          "6DcC1aC8-4A3C-4A98-A3A7-F967127D5763", " { 6dcc 1ac8 4a3c 4a98 a3a7 f967 127d 5763 } "}) {
        EXPECT_EQ(GuidFromText(text), selection) << text;
    }
}

TEST(PropertyKey, NoSeparatorIsChecked) {
    EXPECT_EQ(GuidFromText("6-dcc1ac8zzz4a3c4a98}}a3a7{f967127d57-63"), selection);
}

TEST(PropertyKey, AnyOtherNumberOfDigitsIsTheZeroGuid) {
    for (const char* const text :
         {"", "{}", "6dcc1ac84a3c4a98a3a7f967127d576", "6dcc1ac84a3c4a98a3a7f967127d57630",
          "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}0"}) {
        EXPECT_EQ(GuidFromText(text), GUID{}) << text;
    }
}

TEST(PropertyKey, TheFirstLettersOfWordsCountAsDigitsToo) {
    EXPECT_EQ(GuidFromText(std::string("FX") + selectionText), GUID{}) << "33 digits: F is one";
    EXPECT_EQ(GuidFromText(std::string("GX") + selectionText), selection);
}

TEST(PropertyKey, ANameIsSplitAtItsFirstComma) {
    const PROPERTYKEY key = TextToKey(std::string(selectionText) + ",12,34");
    EXPECT_EQ(key, (PROPERTYKEY{selection, 12}));
    EXPECT_FALSE(isValidKey(TextToKey(std::string(",") + selectionText + ",12")));
}

TEST(PropertyKey, TheNumberEndsAtTheFirstOtherCharacter) {
    const std::string guid = selectionText;
    EXPECT_EQ(TextToKey(guid + ",3000").pid, 3000U);
    EXPECT_EQ(TextToKey(guid + ",12abc").pid, 12U);
    EXPECT_EQ(TextToKey(guid + ",").pid, 0U);
    EXPECT_EQ(TextToKey(guid + ", 5").pid, 0U);
    EXPECT_EQ(TextToKey(guid + ",-5").pid, 0U);
    EXPECT_EQ(TextToKey(guid + ",4294967295").pid, 0xFFFFFFFFU);
}

TEST(PropertyKey, ANumberPast32BitsKeepsItsLowest) {
    EXPECT_EQ(TextToKey(std::string(selectionText) + ",4294967303").pid, 7U);
}

TEST(PropertyKey, OnlyAKeyWithAGuidIsValid) {
    EXPECT_TRUE(isValidKey({selection, 0}));
    EXPECT_FALSE(isValidKey({GUID{}, 5}));
    EXPECT_FALSE(isValidKey(TextToKey("{00000000-0000-0000-0000-000000000000},5")));
    EXPECT_FALSE(isValidKey(TextToKey("SymbolicLinkValue")));
    EXPECT_FALSE(isValidKey(TextToKey(selectionText))) << "without a comma";
}

TEST(PropertyKey, AKeyComesBackFromItsText) {
    for (const DWORD pid : {0U, 1U, 9U, 10U, 3000U, 4294967295U}) {
        const PROPERTYKEY key{selection, static_cast<DWORD>(pid)};
        EXPECT_EQ(TextToKey(KeyToText(key)), key);
    }
}

}  // namespace
}  // namespace korva::platform
