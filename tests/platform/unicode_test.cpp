#include "platform/unicode.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace korva::platform {
namespace {

using namespace std::string_literals;

WideString wide(std::initializer_list<unsigned> units) {
    WideString text;
    for (const unsigned unit : units) {
        text += static_cast<WCHAR>(unit);
    }
    return text;
}

/// Every character in turn, both ways, by the definitions of the two forms.
std::string utf8Of(std::uint32_t c) {
    const auto byte = [](std::uint32_t value) { return static_cast<char>(value); };
    if (c < 0x80) {
        return {byte(c)};
    }
    if (c < 0x800) {
        return {byte(0xC0 | c / 64), byte(0x80 | c % 64)};
    }
    if (c < 0x10000) {
        return {byte(0xE0 | c / 4096), byte(0x80 | c / 64 % 64), byte(0x80 | c % 64)};
    }
    return {byte(0xF0 | c / 262144), byte(0x80 | c / 4096 % 64), byte(0x80 | c / 64 % 64),
            byte(0x80 | c % 64)};
}

WideString wideOf(std::uint32_t c) {
    return c < 0x10000 ? wide({c}) : wide({0xD800 + (c - 0x10000) / 1024, 0xDC00 + (c - 0x10000) % 1024});
}

TEST(Unicode, ConvertsEveryCharacterBothWays) {
    for (std::uint32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) {
            continue;
        }
        ASSERT_EQ(toWide(utf8Of(c)), wideOf(c)) << c;
        ASSERT_EQ(toUtf8(wideOf(c)), utf8Of(c)) << c;
        ASSERT_EQ(exactWide(utf8Of(c)), wideOf(c)) << c;
        ASSERT_EQ(exactUtf8(wideOf(c)), utf8Of(c)) << c;
    }
}

TEST(Unicode, TakesAndAddsEveryCharacter) {
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        if (c >= 0xD800 && c <= 0xDFFF) {
            continue;
        }
        const std::string both = utf8Of(c) + "z";
        std::string_view rest = both;
        ASSERT_EQ(takeCharacter(rest), c);
        ASSERT_EQ(rest, "z");
        std::string text = "a";
        appendCharacter(text, c);
        ASSERT_EQ(text, "a" + utf8Of(c));
    }
}

TEST(Unicode, ConvertsTextsOfAnyMixture) {
    const std::vector<std::pair<std::string, WideString>> alike = {
        {"", {}},
        {"a", wide({'a'})},
        {"a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x8E\xB5z", wide({'a', 0xE4, 0x20AC, 0xD83C, 0xDFB5, 'z'})},
        {"\xF4\x8F\xBF\xBF\xEF\xBF\xBF\xEE\x80\x80", wide({0xDBFF, 0xDFFF, 0xFFFF, 0xE000})},
        {"\xEF\xBF\xBD", wide({0xFFFD})},
        {"a\0b\0"s, wide({'a', 0, 'b', 0})},
    };
    for (const auto& [utf8, utf16] : alike) {
        EXPECT_EQ(toWide(utf8), utf16) << utf8;
        EXPECT_EQ(toUtf8(utf16), utf8);
        EXPECT_EQ(exactWide(utf8), utf16);
        EXPECT_EQ(exactUtf8(utf16), utf8);
    }
}

TEST(Unicode, ReplacesEachSurrogateThatIsAlone) {
    const std::vector<std::pair<WideString, std::string>> broken = {
        {wide({0xD800}), "\xEF\xBF\xBD"},
        {wide({0xDBFF}), "\xEF\xBF\xBD"},
        {wide({0xDC00}), "\xEF\xBF\xBD"},
        {wide({0xDFFF}), "\xEF\xBF\xBD"},
        {wide({0xD800, 'a'}),
         "\xEF\xBF\xBD"
         "a"},
        {wide({0xD800, 0xE000}), "\xEF\xBF\xBD\xEE\x80\x80"},
        {wide({0xDC00, 0xD800}), "\xEF\xBF\xBD\xEF\xBF\xBD"},
        {wide({0xD800, 0xD800, 0xDC00}), "\xEF\xBF\xBD\xF0\x90\x80\x80"},
        {wide({0xD800, 0xDC00, 0xDC00}), "\xF0\x90\x80\x80\xEF\xBF\xBD"},
        {wide({0xD7FF, 0xDFFF, 0xE000}), "\xED\x9F\xBF\xEF\xBF\xBD\xEE\x80\x80"},
    };
    for (const auto& [utf16, utf8] : broken) {
        EXPECT_EQ(toUtf8(utf16), utf8);
        EXPECT_EQ(exactUtf8(utf16), std::nullopt);
    }
}

TEST(Unicode, ReplacesBytesThatAreNoCharacter) {
    const unsigned r = 0xFFFD;
    const std::vector<std::pair<std::string, WideString>> broken = {
        // Followers without a first byte, and bytes that never occur.
        {"\x80", wide({r})},
        {"\xBF", wide({r})},
        {"\x80\x80\x80", wide({r, r, r})},
        {"\xFE\xFF", wide({r, r})},
        {"\xF8\x88\x80\x80\x80", wide({r, r, r, r, r})},
        // Cut off, by the end or another character: one replacement for what there is.
        {"\xC3", wide({r})},
        {"\xC3"
         "a",
         wide({r, 'a'})},
        {"\xC3\xC3\xA4", wide({r, 0xE4})},
        {"\xE2\x82", wide({r})},
        {"\xE2\x82"
         "a",
         wide({r, 'a'})},
        {"\xE2", wide({r})},
        {"\xF0\x9F\x8E", wide({r})},
        {"\xF0\x9F\x8E"
         "a",
         wide({r, 'a'})},
        {"\xF0\x9F"
         "a",
         wide({r, 'a'})},
        {"\xF0", wide({r})},
        {"\xE2\0"s, wide({r, 0})},
        // Longer than needed.
        {"\xC0\x80", wide({r, r})},
        {"\xC1\xBF", wide({r, r})},
        {"\xE0\x80\x80", wide({r, r, r})},
        {"\xE0\x9F\xBF", wide({r, r, r})},
        {"\xF0\x80\x80\x80", wide({r, r, r, r})},
        {"\xF0\x8F\xBF\xBF", wide({r, r, r, r})},
        // Surrogates, alone and as a pair.
        {"\xED\xA0\x80", wide({r, r, r})},
        {"\xED\xBF\xBF", wide({r, r, r})},
        {"\xED\xA0\xBC\xED\xBE\xB5", wide({r, r, r, r, r, r})},
        // Past the last character.
        {"\xF4\x90\x80\x80", wide({r, r, r, r})},
        {"\xF5\x80\x80\x80", wide({r, r, r, r})},
        {"\xF7\xBF\xBF\xBF", wide({r, r, r, r})},
    };
    for (const auto& [utf8, utf16] : broken) {
        EXPECT_EQ(toWide(utf8), utf16) << testing::PrintToString(utf8);
        EXPECT_EQ(exactWide(utf8), std::nullopt) << testing::PrintToString(utf8);
        std::string_view rest = utf8;
        EXPECT_EQ(takeCharacter(rest), std::nullopt) << testing::PrintToString(utf8);
        EXPECT_EQ(rest, utf8);
        EXPECT_EQ(toWide("a" + utf8 + "\xC3\xA4"), wide({'a'}) + utf16 + wide({0xE4}))
            << testing::PrintToString(utf8);
    }
}

TEST(Unicode, ReadsNothingBehindTheText) {
    // A text that is cut off before its last byte, which lies behind it.
    const std::string whole = "\xF0\x9F\x8E\xB5";
    for (std::size_t length = 1; length < whole.size(); ++length) {
        EXPECT_EQ(toWide(std::string_view(whole).substr(0, length)), wide({0xFFFD}));
    }
    const WideString pair = wide({0xD83C, 0xDFB5});
    EXPECT_EQ(toUtf8(WideView(pair).substr(0, 1)), "\xEF\xBF\xBD");
}

}  // namespace
}  // namespace korva::platform
