#include "korva/doctor/command_word.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

TEST(CommandWord, IsPlainWhereNoShellTakesItApart) {
    for (const char* const text : {"a", "/usr/lib/libKORVA.so", "C:/x", "-", "a_b-c.d,e@f+g=h"}) {
        EXPECT_EQ(commandWord(text), text);
    }
}

TEST(CommandWord, OfAKeyStandsInDoubleQuotesWithItsBackslashes) {
    EXPECT_EQ(commandWord("HKLM\\Software\\{0.0.0.00000000}.{x}\\User"),
              "\"HKLM\\Software\\{0.0.0.00000000}.{x}\\User\"");
    EXPECT_EQ(commandWord("two words"), "\"two words\"");
    EXPECT_EQ(commandWord("it's"), "\"it's\"");
}

TEST(CommandWord, OfNothingIsNoMissingWord) {
    EXPECT_EQ(commandWord(""), "\"\"");
}

TEST(CommandWord, ThatDoubleQuotesWouldChangeStandsInSingleOnes) {
    EXPECT_EQ(commandWord("a$b"), "'a$b'");
    EXPECT_EQ(commandWord("a\"b"), "'a\"b'");
    EXPECT_EQ(commandWord("`date`"), "'`date`'");
    EXPECT_EQ(commandWord("a!"), "'a!'");
    EXPECT_EQ(commandWord("a\\\\b"), "'a\\\\b'");
    EXPECT_EQ(commandWord("folder\\"), "'folder\\'");
    EXPECT_EQ(commandWord("$it's"), "'$it'\\''s'");
}

}  // namespace
}  // namespace korva::tool
