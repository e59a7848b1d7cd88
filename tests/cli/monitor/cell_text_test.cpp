#include "korva/monitor/cell_text.h"

#include <gtest/gtest.h>

namespace korva::tool {
namespace {

TEST(CellText, ShowsControlCharactersAndNoBytesThatAreNoText) {
    EXPECT_EQ(printable("a\x1b[2J\n\x7f"), "a\\x1B[2J\\x0A\\x7F");
    EXPECT_EQ(printable("\xC2\x9B"), "\\x9B");  // a sequence's beginning, in one character
    EXPECT_EQ(printable("\xE2\x80\xAE"
                        "x"),
              "\\x202Ex");  // turns the direction of writing
    EXPECT_EQ(printable("a\xffz\xC3"), "a?z?");
    EXPECT_EQ(printable("Müller"), "Müller");
}

TEST(CellText, CountsWideCharactersTwiceAndMarksNotAtAll) {
    EXPECT_EQ(cellCount(""), 0U);
    EXPECT_EQ(cellCount("Müller"), 6U);
    EXPECT_EQ(cellCount("漢字"), 4U);
    EXPECT_EQ(cellCount("e\xCC\x81"), 1U);
    EXPECT_EQ(cellCount("█▁│"), 3U);
}

TEST(CellText, CutsBetweenCharactersNeverInside) {
    EXPECT_EQ(cutTo("Müller", 2), "Mü");
    EXPECT_EQ(cutTo("漢字", 3), "漢");
    EXPECT_EQ(cutTo("abc", 3), "abc");
    EXPECT_EQ(cutTo("abc", 0), "");
}

TEST(CellText, FillsToTheWidthOnEitherSide) {
    EXPECT_EQ(padTo("ü", 3), "ü  ");
    EXPECT_EQ(padLeftTo("ü", 3), "  ü");
    EXPECT_EQ(padTo("漢字", 3), "漢 ");
    EXPECT_EQ(padLeftTo("abcd", 3), "abc");
}

TEST(CellText, AsAsciiHasAQuestionMarkForEachOtherCharacter) {
    EXPECT_EQ(asAscii("Mü漢\xff."), "M???.");
}

}  // namespace
}  // namespace korva::tool
