// Names and paths of the registry, and what makes two of them equal.
#include <gtest/gtest.h>

#include <string>

#include "embedded_registry/case_folding.h"
#include "embedded_registry/names.h"

namespace korva::platform::embedded {
namespace {

std::string folded(std::string_view name) {
    return foldedName(name, longestKeyName).value_or("(none)");
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string all;
    while (times-- > 0) {
        all += text;
    }
    return all;
}

TEST(CaseFolding, FoldsEveryCodePointToOneThatStaysAsItIs) {
    std::size_t moved = 0;
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        const char32_t one = foldCase(code);
        ASSERT_EQ(foldCase(one), one) << std::hex << static_cast<std::uint32_t>(code);
        moved += one == code ? 0 : 1;
    }
    // As many as Unicode 14 has.
    EXPECT_EQ(moved, 1454u);
}

TEST(CaseFolding, JoinsWhatDiffersInCase) {
    EXPECT_EQ(folded("FxProperties"), "fxproperties");
    EXPECT_EQ(folded("ÄÖÜ Ÿ"), "äöü ÿ");
    EXPECT_EQ(folded("ΣΑΣ"), folded("σας"));
    EXPECT_EQ(folded("ЖЏ"), "жџ");
    EXPECT_EQ(folded("\u212A"), "k");               // the sign of the kelvin
    EXPECT_EQ(folded("\u1E9E"), "ß");               // the large one
    EXPECT_EQ(folded("\U00010400"), "\U00010428");  // in two UTF-16 units
    EXPECT_EQ(folded("Ꭰ"), folded("\uAB70"));
}

TEST(CaseFolding, KeepsApartWhatOnlyLooksAlike) {
    EXPECT_NE(folded("ß"), folded("SS"));
    EXPECT_EQ(folded("\u0130"), "\u0130");  // a dotted I is a letter of its own
    EXPECT_NE(folded("ı"), folded("i"));
    EXPECT_EQ(folded("[]^_`{|}~@"), "[]^_`{|}~@");
}

TEST(RegistryNames, AreRefusedUnlessTheyAreUtf8) {
    for (const std::string& wrong :
         {std::string("\x80"), std::string("\xC3"), std::string("\xC3("), std::string("\xC0\xAF"),
          std::string("\xE0\x80\xAF"), std::string("\xED\xA0\x80"), std::string("\xF4\x90\x80\x80"),
          std::string("\xF8\x88\x80\x80\x80"), std::string("a\xFF"), std::string("\xF0\x9F\x98"),
          std::string("a\0b", 3)}) {
        EXPECT_FALSE(foldedName(wrong, longestKeyName)) << testing::PrintToString(wrong);
    }
    EXPECT_EQ(folded("\U0010FFFF"), "\U0010FFFF");
    EXPECT_EQ(folded("\uD7FF\uE000"), "\uD7FF\uE000");
}

TEST(RegistryNames, AreCountedInUnitsOfUtf16) {
    EXPECT_TRUE(foldedName(repeated("ä", 255), longestKeyName));
    EXPECT_FALSE(foldedName(repeated("ä", 256), longestKeyName));
    EXPECT_TRUE(foldedName(repeated("😀", 127) + "a", longestKeyName));
    EXPECT_FALSE(foldedName(repeated("😀", 128), longestKeyName));
    EXPECT_TRUE(foldedName("", longestKeyName));
}

TEST(RegistryPath, IsSplitAtBackslashes) {
    const auto path = splitPath("Software\\Ä/b\\c");
    ASSERT_TRUE(path);
    ASSERT_EQ(path->size(), 3u);
    EXPECT_EQ((*path)[1].written, "Ä/b");
    EXPECT_EQ((*path)[1].folded, "ä/b");
    EXPECT_TRUE(splitPath("")->empty());
}

TEST(RegistryPath, MayEndInABackslashButHasNoEmptyPart) {
    EXPECT_EQ(splitPath("a\\b\\")->size(), 2u);
    for (const char* wrong : {"\\", "\\a", "a\\\\b", "a\\\\", "\\\\"}) {
        EXPECT_FALSE(splitPath(wrong)) << wrong;
    }
}

TEST(RegistryPath, HasAtMost512Parts) {
    EXPECT_EQ(splitPath(repeated("a\\", 512))->size(), 512u);
    EXPECT_FALSE(splitPath(repeated("a\\", 513)));
}

}  // namespace
}  // namespace korva::platform::embedded
