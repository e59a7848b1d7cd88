#include "korva/registry/reg_text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korva/registry/reg_characters.h"
#include "platform/unicode.h"
#include "tests/support/random_samples.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using platform::RegistryRoot;
using platform::RegistryValue;
using Kind = RegistryChange::Kind;
using Bytes = std::vector<std::byte>;
namespace types = platform::registry_type;

const std::string head = "Windows Registry Editor Version 5.00\r\n\r\n";
const std::string headAndKey = head + "[HKEY_LOCAL_MACHINE\\Software\\A]\r\n";

Bytes bytesOf(std::string_view text) {
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

Bytes data(std::initializer_list<unsigned> values) {
    Bytes bytes;
    for (const unsigned value : values) {
        bytes.push_back(static_cast<std::byte>(value));
    }
    return bytes;
}

RegText read(std::string_view utf8) {
    return readRegText(bytesOf(utf8));
}

std::string written(const std::vector<RegistryChange>& changes) {
    const Bytes bytes = writeRegText(changes);
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 2), data({0xFF, 0xFE}));
    return platform::toUtf8(unitsOf(std::span(bytes).subspan(2)));
}

/// The only value that these lines below a key give.
RegistryValue valueIn(std::string_view line) {
    const RegText text = read(headAndKey + std::string(line) + "\r\n");
    EXPECT_EQ(text.changes.size(), 2U) << line;
    EXPECT_EQ(text.changes.back().kind, Kind::setValue) << line;
    return text.changes.back().value;
}

RegistryValue stringValue(const platform::WideString& units) {
    RegistryValue value{types::string, {}};
    appendUnits(value.data, units);
    return value;
}

/// "line: what was expected", or nothing for a text that can be read.
std::string errorIn(const Bytes& bytes) {
    try {
        static_cast<void>(readRegText(bytes));
        return {};
    } catch (const RegTextError& error) {
        return std::to_string(error.line) + ": " + error.what();
    }
}

testing::AssertionResult refused(std::string_view text, const std::string& beginning) {
    const std::string error = errorIn(bytesOf(text));
    if (error.starts_with(beginning)) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "'" << error << "', not '" << beginning << "' for\n" << text;
}

testing::AssertionResult sameChange(const RegistryChange& a, const RegistryChange& b) {
    if (a.kind == b.kind && a.root == b.root && a.path == b.path && a.name == b.name &&
        a.value.type == b.value.type && a.value.data == b.value.data) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << a.path << " '" << a.name << "' type " << a.value.type << " of "
                                       << a.value.data.size() << " bytes, not " << b.path << " '" << b.name
                                       << "' type " << b.value.type << " of " << b.value.data.size();
}

void expectSame(const std::vector<RegistryChange>& actual, const std::vector<RegistryChange>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < actual.size(); ++i) {
        EXPECT_TRUE(sameChange(actual[i], expected[i])) << "change " << i;
    }
}

RegistryChange setting(const std::string& name, RegistryValue value) {
    return {Kind::setValue, RegistryRoot::localMachine, "Software\\A", name, std::move(value)};
}

/// What comes back when a value is written and read.
RegistryValue afterRoundTrip(const RegistryValue& value) {
    const std::vector<RegistryChange> changes = {
        {Kind::createKey, RegistryRoot::localMachine, "Software\\A", {}, {}}, setting("n", value)};
    const RegText text = readRegText(writeRegText(changes));
    expectSame(text.changes, changes);
    return text.changes.back().value;
}

std::string lineFor(const RegistryValue& value) {
    const std::string text = written({setting("n", value)});
    const std::size_t begin = text.find("\"n\"=");
    return text.substr(begin, text.size() - begin - 4);
}

/// A text with everything that the format has.
std::string everything() {
    return head +
           "; a comment\r\n"
           "[HKEY_LOCAL_MACHINE\\Software\\A]\r\n"
           "@=\"text\"\r\n"
           "\"a\\\\b\\\"c\"=\"\\\\ \\\" \xC3\xA4 \xF0\x9F\x98\x80\"\r\n"
           "\"n\" = dword:0000001f ; why\r\n"
           "\"bin\"=hex:01,02,\\\r\n"
           "  03,04\r\n"
           "\"multi\"=hex(7):61,00,00,00,00,00\r\n"
           "\"two\"=\"one\r\ntwo\"\r\n"
           "\"gone\"=-\r\n"
           "\r\n"
           "[-HKEY_CURRENT_USER\\B]\r\n"
           "[HKCR\\]c]\r\n"
           "\"q\"=hex(b):01,02,03,04,05,06,07,08\r\n"
           "\r\n";
}

/// The same in the bytes that Windows writes.
Bytes asUtf16(const std::string& utf8) {
    return encodeRegText(platform::toWide(utf8));
}

TEST(RegTextReader, GivesEachChangeWithItsLine) {
    const RegText text = read(everything());
    const std::vector<std::pair<Kind, std::size_t>> expected = {
        {Kind::createKey, 4},   {Kind::setValue, 5},   {Kind::setValue, 6},  {Kind::setValue, 7},
        {Kind::setValue, 8},    {Kind::setValue, 10},  {Kind::setValue, 11}, {Kind::deleteValue, 13},
        {Kind::deleteTree, 15}, {Kind::createKey, 16}, {Kind::setValue, 17}};
    ASSERT_EQ(text.changes.size(), expected.size());
    ASSERT_EQ(text.lines.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(text.changes[i].kind, expected[i].first) << i;
        EXPECT_EQ(text.lines[i], expected[i].second) << i;
    }
}

TEST(RegTextReader, KnowsRootsByLongAndShortNameInAnyCase) {
    const std::vector<std::pair<std::string, RegistryRoot>> roots = {
        {"HKEY_LOCAL_MACHINE", RegistryRoot::localMachine}, {"HKLM", RegistryRoot::localMachine},
        {"HKEY_CURRENT_USER", RegistryRoot::currentUser},   {"hkcu", RegistryRoot::currentUser},
        {"HKEY_CLASSES_ROOT", RegistryRoot::classesRoot},   {"Hkcr", RegistryRoot::classesRoot}};
    for (const auto& [name, root] : roots) {
        const RegText text = read(head + "[" + name + "\\A]\n");
        ASSERT_EQ(text.changes.size(), 1U) << name;
        EXPECT_EQ(text.changes[0].root, root) << name;
        EXPECT_EQ(text.changes[0].path, "A") << name;
    }
}

TEST(RegTextReader, NamesTheLineOfAnUnknownRoot) {
    for (const char* const key : {"HKEY_USERS\\A", "HKU\\A", "A", "", "\\A", "HKLM/A", "HKLMA\\B"}) {
        EXPECT_TRUE(refused(head + "[" + key + "]\n", "3: expected a key that begins with HKLM")) << key;
    }
}

TEST(RegTextReader, RefusesAKeyWithAPartThatIsEmpty) {
    EXPECT_TRUE(refused(head + "[HKLM\\A\\\\B]\n", "3: expected a name between"));
    EXPECT_TRUE(refused(head + "[HKLM\\\\A]\n", "3: expected a name between"));
    EXPECT_TRUE(refused(head + "[HKLM\\A\\\\]\n", "3: expected a name between"));
}

TEST(RegTextReader, TakesAKeyUpToTheLastBracketOfItsLine) {
    EXPECT_EQ(read(head + "[HKLM\\a]b[c]\n").changes[0].path, "a]b[c");
    EXPECT_EQ(read(head + "[HKLM\\ a ; b ] ; c\n").changes[0].path, " a ; b ");
    EXPECT_TRUE(refused(head + "[HKLM\\a\n]\n", "3: expected a ']'"));
    EXPECT_TRUE(refused(head + "[HKLM\\a] b\n", "3: expected the end of the line"));
}

TEST(RegTextReader, NeverDeletesARoot) {
    EXPECT_TRUE(refused(head + "[-HKLM]\n", "3: expected a key below its root"));
    EXPECT_TRUE(refused(head + "[-HKEY_CURRENT_USER\\]\n", "3: expected a key below its root"));
}

TEST(RegTextReader, WantsAKeyBeforeAValueAlsoBehindADeletedOne) {
    EXPECT_TRUE(refused(head + "\"a\"=\"b\"\n", "3: expected a key"));
    EXPECT_TRUE(refused(head + "[-HKLM\\A]\n\"a\"=\"b\"\n", "4: expected a key"));
}

TEST(RegTextReader, ReadsTextWithEveryEscape) {
    EXPECT_EQ(valueIn(R"("n"="")").data, stringValue({0}).data);
    EXPECT_EQ(valueIn(R"("n"="a\\b\"c")").data, stringValue({'a', '\\', 'b', '"', 'c', 0}).data);
    EXPECT_EQ(valueIn(R"("n"="\n\r\0")").data, stringValue({'\n', '\r', 0, 0}).data);
    EXPECT_EQ(valueIn("\"n\"=\"; [x] @=\"").data, stringValue(widened("; [x] @=") + WCHAR{0}).data);
    EXPECT_EQ(valueIn(R"("n"="a")").type, types::string);
    EXPECT_TRUE(refused(headAndKey + "\"n\"=\"C:\\temp\"\n", "4: expected \\\\ or \\\""));
}

TEST(RegTextReader, KeepsLineBreaksInQuotesAsTheyAre) {
    EXPECT_EQ(valueIn("\"n\"=\"a\r\nb\rc\nd\"").data, stringValue(widened("a\r\nb\rc\nd") + WCHAR{0}).data);
    EXPECT_TRUE(refused(headAndKey + "\"n\"=\"a\n\nb\" x\n", "6: expected the end of the line"));
}

TEST(RegTextReader, SaysWhereAQuoteBeganThatDoesNotEnd) {
    EXPECT_TRUE(refused(headAndKey + "\"n\"=\"a\n\n\n", "4: expected a '\"' at the end of the text"));
    EXPECT_TRUE(refused(headAndKey + "\"n\n\n", "4: expected a '\"' at the end of the text"));
}

TEST(RegTextReader, ReadsNumbersOfOneToEightDigits) {
    EXPECT_EQ(valueIn("\"n\"=dword:1").data, data({1, 0, 0, 0}));
    EXPECT_EQ(valueIn("\"n\"=dword:89AbCdEf").data, data({0xEF, 0xCD, 0xAB, 0x89}));
    EXPECT_EQ(valueIn("\"n\"=dword:0").type, types::dword);
    for (const char* const digits : {"", "123456789", "x", "-1", " 1"}) {
        EXPECT_TRUE(refused(headAndKey + "\"n\"=dword:" + digits + "\n", "4: expected 1 to 8")) << digits;
    }
    EXPECT_TRUE(refused(headAndKey + "\"n\"=dword:1g\n", "4: expected the end of the line"));
}

TEST(RegTextReader, ReadsBytesOfAnyType) {
    EXPECT_EQ(valueIn("\"n\"=hex:").data, Bytes());
    EXPECT_EQ(valueIn("\"n\"=hex:").type, types::binary);
    EXPECT_EQ(valueIn("\"n\"=hex:1,02,fF").data, data({1, 2, 0xFF}));
    EXPECT_EQ(valueIn("\"n\"=hex: 01 , 02 ; c").data, data({1, 2}));
    for (const auto& [text, type] : std::initializer_list<std::pair<const char*, std::uint32_t>>{
             {"0", 0}, {"1", 1}, {"2", 2}, {"7", 7}, {"b", 11}, {"ffff0000", 0xFFFF0000}, {"00000007", 7}}) {
        EXPECT_EQ(valueIn("\"n\"=hex(" + std::string(text) + "):01").type, type) << text;
    }
    for (const char* const bytes : {"01,", "01,,02", ",01", "001", "g", "01 02", "1,2,x"}) {
        EXPECT_TRUE(refused(headAndKey + "\"n\"=hex:" + bytes + "\n", "4: expected")) << bytes;
    }
    for (const char* const type : {"", "123456789", "g", "-1"}) {
        EXPECT_TRUE(refused(headAndKey + "\"n\"=hex(" + type + "):\n", "4: expected a type")) << type;
    }
    EXPECT_TRUE(refused(headAndKey + "\"n\"=hex(1:\n", "4: expected a ')'"));
    EXPECT_TRUE(refused(headAndKey + "\"n\"=hex(1)\n", "4: expected a ':'"));
    EXPECT_TRUE(refused(headAndKey + "\"n\"=hex\n", "4: expected a ':'"));
}

TEST(RegTextReader, JoinsLinesThatEndInABackslash) {
    EXPECT_EQ(valueIn("\"n\"=hex:01,\\\r\n  02,\\\n\t03").data, data({1, 2, 3}));
    EXPECT_EQ(valueIn("\"n\"=hex:\\\r\n  01").data, data({1}));
    EXPECT_EQ(valueIn("\"n\"=hex:01\\\r\n  ,02").data, data({1, 2}));
    EXPECT_EQ(valueIn("\"n\"=hex:01,\\ ; why\r\n ; because\r\n  02").data, data({1, 2}));
    EXPECT_TRUE(refused(headAndKey + "\"n\"=hex:01,\\\n\n", "5: expected a byte"));
    EXPECT_TRUE(refused(headAndKey + "\"n\"=hex:01,\\\n", "5: expected a byte"));
    EXPECT_TRUE(refused(headAndKey + "\"n\"=hex:01\\\n\n", "5: expected a ','"));
    EXPECT_TRUE(refused(headAndKey + "\"n\"=hex:01,\\ 02\n", "4: expected the end of the line"));
}

TEST(RegTextReader, ReadsTheDefaultValueAndDeletions) {
    const RegText text = read(headAndKey + "@=\"x\"\r\n\"\"=-\r\n@ = -\r\n");
    ASSERT_EQ(text.changes.size(), 4U);
    EXPECT_EQ(text.changes[1].name, "");
    EXPECT_EQ(text.changes[1].kind, Kind::setValue);
    EXPECT_EQ(text.changes[2].name, "");
    EXPECT_EQ(text.changes[2].kind, Kind::deleteValue);
    EXPECT_EQ(text.changes[3].kind, Kind::deleteValue);
}

TEST(RegTextReader, SaysWhatIsMissingFromAValue) {
    EXPECT_TRUE(refused(headAndKey + "\"a\"\n", "4: expected a '='"));
    EXPECT_TRUE(refused(headAndKey + "\"a\"=\n", "4: expected a value behind '='"));
    EXPECT_TRUE(refused(headAndKey + "\"a\"=b\n", "4: expected a value behind '='"));
    EXPECT_TRUE(refused(headAndKey + "\"a\"=\"b\"c\n", "4: expected the end of the line"));
    EXPECT_TRUE(refused(headAndKey + "\"a\"=--\n", "4: expected the end of the line"));
    EXPECT_TRUE(refused(headAndKey + "a=\"b\"\n", "4: expected a key in brackets"));
}

TEST(RegTextReader, RefusesNamesThatRegistriesCannotHave) {
    EXPECT_TRUE(refused(headAndKey + "\"a\\0b\"=\"c\"\n", "4: expected a name of whole characters"));
    platform::WideString text = platform::toWide(headAndKey) + widened("\"a\"=\"b\"\n");
    text[text.rfind(WCHAR('a'))] = static_cast<WCHAR>(0xD800);
    EXPECT_TRUE(errorIn(encodeRegText(text)).starts_with("4: expected a name of whole characters"));
    text = platform::toWide(head + "[HKLM\\a]\n");
    text[text.rfind(WCHAR('a'))] = static_cast<WCHAR>(0xDC00);
    EXPECT_TRUE(errorIn(encodeRegText(text)).starts_with("3: expected a key of whole characters"));
}

TEST(RegTextReader, KeepsSurrogatesThatStandAloneInText) {
    platform::WideString text = platform::toWide(headAndKey + "\"a\"=\"b\"\n");
    text[text.rfind(WCHAR('b'))] = static_cast<WCHAR>(0xD800);
    EXPECT_EQ(readRegText(encodeRegText(text)).changes.back().value.data, data({0, 0xD8, 0, 0}));
}

TEST(RegTextReader, ReadsEveryFormOfCharactersAlike) {
    const std::string text = everything();
    const std::vector<RegistryChange> expected = read(text).changes;
    expectSame(read("\xEF\xBB\xBF" + text).changes, expected);
    expectSame(readRegText(asUtf16(text)).changes, expected);
}

TEST(RegTextReader, RefusesBytesThatAreNoText) {
    EXPECT_TRUE(refused(headAndKey + "\"a\"=\"\xFF\"\n", "4: expected UTF-8, or UTF-16"));
    EXPECT_TRUE(refused(headAndKey + "\"a\"=\"\xED\xA0\x80\"\n", "4: expected UTF-8, or UTF-16"));
    EXPECT_TRUE(refused("\xFF", "1: expected UTF-8, or UTF-16"));
    EXPECT_TRUE(refused(std::string("\xFE\xFF\0W", 4), "1: expected UTF-8 or little-endian UTF-16"));
    EXPECT_TRUE(refused(headAndKey + std::string("\"a\"=\"\0\"\n", 8), "4: expected text"));
    EXPECT_TRUE(refused(std::string("W\0i\0n\0", 6), "1: expected text"));
    Bytes odd = asUtf16(headAndKey + "\"a\"=\"b\"\n");
    odd.push_back(std::byte{'x'});
    EXPECT_EQ(errorIn(odd), "5: expected a whole character at the end: it is cut in half");
}

TEST(RegTextReader, TakesCrLfAndBothForLineEnds) {
    const std::string lines = "\n[HKLM\\A]\n\n\"a\"=hex:01,\\\n 02\n\"b\"=dword:1\n";
    const std::vector<std::size_t> expected = {3, 5, 7};
    for (const char* const lineEnd : {"\n", "\r", "\r\n"}) {
        std::string text = "Windows Registry Editor Version 5.00\n" + lines;
        for (std::size_t at = 0; (at = text.find('\n', at)) != std::string::npos;) {
            text.replace(at, 1, lineEnd);
            at += std::string_view(lineEnd).size();
        }
        EXPECT_EQ(read(text).lines, expected) << testing::PrintToString(lineEnd);
    }
}

TEST(RegTextReader, WantsItsSignatureFirst) {
    EXPECT_EQ(errorIn({}), "1: expected 'Windows Registry Editor Version 5.00'");
    EXPECT_TRUE(refused("\n" + head, "1: expected 'Windows Registry Editor Version 5.00'"));
    EXPECT_TRUE(refused("Windows Registry Editor Version 5.000\n", "1: expected the end of the line"));
    EXPECT_TRUE(refused("REGEDIT4\n", "1: expected 'Windows Registry Editor Version 5.00'; the older form"));
    EXPECT_TRUE(read(head).changes.empty());
}

TEST(RegTextReader, TakesATextThatIsCutAnywhereForCutOrForItsBeginning) {
    const std::string whole = everything();
    const std::vector<RegistryChange> expected = read(whole).changes;
    for (const bool wide : {false, true}) {
        const Bytes bytes = wide ? asUtf16(whole) : bytesOf(whole);
        std::size_t readable = 0;
        for (std::size_t size = 0; size < bytes.size(); ++size) {
            const Bytes cut(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
            if (!errorIn(cut).empty()) {
                continue;
            }
            ++readable;
            const std::vector<RegistryChange> changes = readRegText(cut).changes;
            ASSERT_LE(changes.size(), expected.size());
            expectSame(changes,
                       {expected.begin(), expected.begin() + static_cast<std::ptrdiff_t>(changes.size())});
        }
        EXPECT_GT(readable, expected.size());  // behind each CR and LF that ends a change
    }
}

TEST(RegTextReader, RefusesAnEndWithoutALineBreak) {
    EXPECT_TRUE(refused(headAndKey + "\"a\"=dword:1", "4: expected a line break at the end"));
    EXPECT_TRUE(refused(head + "[HKLM\\A]", "3: expected a line break at the end"));
    EXPECT_EQ(read(headAndKey + "  ").changes.size(), 1U);
}

TEST(RegTextReader, RefusesWhatWouldTakeTooMuchMemory) {
    // 12 MB of text whose path of 64 KiB would be repeated by three million values.
    std::string text = head + "[HKLM\\" + std::string(1 << 16, 'a') + "]\n";
    for (int i = 0; i < 3'000'000; ++i) {
        text += "@=-\n";
    }
    const std::string error = errorIn(bytesOf(text));
    EXPECT_NE(error.find("expected less to change"), std::string::npos) << error;
}

TEST(RegTextReader, TakesLongTextsInTimeOfTheirLength) {
    std::string longBytes = headAndKey + "\"n\"=hex:00";
    for (int i = 0; i < 1'000'000; ++i) {
        longBytes += i % 25 == 0 ? ",\\\r\n  01" : ",01";
    }
    EXPECT_EQ(read(longBytes + "\n").changes.back().value.data.size(), 1'000'001U);
    const std::string brackets = head + std::string(1 << 20, '[') + "\n";
    EXPECT_TRUE(errorIn(bytesOf(brackets)).starts_with("3: expected a ']'"));
}

TEST(RegTextWriter, WritesWhatWindowsWrites) {
    const std::vector<RegistryChange> changes = {
        {Kind::createKey, RegistryRoot::localMachine, "Software\\A", {}, {}},
        setting("", stringValue(widened("text") + WCHAR{0})),
        setting("a\\b\"c", {types::dword, data({0x12, 0, 0, 0x80})}),
        {Kind::createKey, RegistryRoot::currentUser, "B", {}, {}},
        {Kind::deleteValue, RegistryRoot::currentUser, "B", "x", {}},
        {Kind::deleteTree, RegistryRoot::classesRoot, "C", {}, {}}};
    EXPECT_EQ(written(changes),
              "Windows Registry Editor Version 5.00\r\n"
              "\r\n[HKEY_LOCAL_MACHINE\\Software\\A]\r\n"
              "@=\"text\"\r\n"
              "\"a\\\\b\\\"c\"=dword:80000012\r\n"
              "\r\n[HKEY_CURRENT_USER\\B]\r\n"
              "\"x\"=-\r\n"
              "\r\n[-HKEY_CLASSES_ROOT\\C]\r\n"
              "\r\n");
}

TEST(RegTextWriter, WritesOnlyTextInQuotesThatComesBackToTheByte) {
    EXPECT_EQ(lineFor(stringValue({'a', 0})), "\"n\"=\"a\"");
    EXPECT_EQ(lineFor(stringValue({0})), "\"n\"=\"\"");
    EXPECT_EQ(lineFor({types::string, {}}), "\"n\"=hex(1):");
    EXPECT_EQ(lineFor(stringValue({'a'})), "\"n\"=hex(1):61,00");
    EXPECT_EQ(lineFor(stringValue({'a', 0, 0})), "\"n\"=hex(1):61,00,00,00,00,00");
    EXPECT_EQ(lineFor(stringValue({0, 'a', 0})), "\"n\"=hex(1):00,00,61,00,00,00");
    EXPECT_EQ(lineFor(stringValue({'\t', 0})), "\"n\"=hex(1):09,00,00,00");
    EXPECT_EQ(lineFor(stringValue({0x7F, 0})), "\"n\"=hex(1):7f,00,00,00");
    EXPECT_EQ(lineFor(stringValue({static_cast<WCHAR>(0xD800), 0})), "\"n\"=hex(1):00,d8,00,00");
    EXPECT_EQ(lineFor({types::string, data({'a', 0, 0})}), "\"n\"=hex(1):61,00,00");
}

TEST(RegTextWriter, WritesOtherTypesAsTheirBytes) {
    EXPECT_EQ(lineFor({types::dword, data({1, 2, 3})}), "\"n\"=hex(4):01,02,03");
    EXPECT_EQ(lineFor({types::none, {}}), "\"n\"=hex(0):");
    EXPECT_EQ(lineFor({types::binary, data({0xAB})}), "\"n\"=hex:ab");
    EXPECT_EQ(lineFor({types::expandString, data({'a', 0})}), "\"n\"=hex(2):61,00");
    EXPECT_EQ(lineFor({types::multiString, data({0, 0})}), "\"n\"=hex(7):00,00");
    EXPECT_EQ(lineFor({types::qword, data({1})}), "\"n\"=hex(b):01");
    EXPECT_EQ(lineFor({0xFFFF0000, data({1})}), "\"n\"=hex(ffff0000):01");
}

TEST(RegTextWriter, KeepsLinesOfBytesWithinEightyColumns) {
    for (std::size_t size = 0; size < 120; ++size) {
        const RegistryValue value{types::binary, Bytes(size, std::byte{0x5A})};
        const std::string text = lineFor(value);
        for (std::size_t begin = 0; begin < text.size();) {
            const std::size_t end = std::min(text.find("\r\n", begin), text.size());
            EXPECT_LE(end - begin, 80U);
            begin = end + 2;
        }
        EXPECT_EQ(afterRoundTrip(value).data, value.data);
    }
}

TEST(RegTextWriter, RefusesAKeyWithALineBreakInItsName) {
    const RegistryChange change{Kind::createKey, RegistryRoot::localMachine, "a\nb", {}, {}};
    EXPECT_THROW(static_cast<void>(writeRegText({&change, 1})), std::invalid_argument);
}

TEST(RegTextWriter, KeepsNamesWithEveryKindOfCharacter) {
    for (const char* const name : {"", "@", "\"", "\\", "\\\"", "a\nb", "a\r\nb", "\t", "=", ";", "[x]", "-",
                                   " a ", "\xC3\xA4", "\xF0\x9F\x98\x80", "\x7F", "\xEF\xBB\xBF"}) {
        const std::vector<RegistryChange> changes = {
            {Kind::createKey, RegistryRoot::localMachine, "Software\\A", {}, {}},
            setting(name, {types::dword, data({1, 0, 0, 0})})};
        expectSame(readRegText(writeRegText(changes)).changes, changes);
    }
}

/// A string of units that writers have to think about.
platform::WideString randomUnits(test::RandomSamples& random) {
    constexpr std::array<unsigned, 16> units = {0,      'a',    '"',    '\\',   '\r',   '\n',   ';',    ']',
                                                0xD800, 0xDC00, 0xD83D, 0xDE00, 0xFEFF, 0xFFFF, 0x2028, 0xE4};
    platform::WideString text;
    for (std::uint32_t length = random.below(12); length > 0; --length) {
        text += static_cast<WCHAR>(units[random.below(units.size())]);
    }
    return text;
}

RegistryValue randomValue(test::RandomSamples& random) {
    constexpr std::array<std::uint32_t, 8> someTypes = {0, 1, 2, 3, 4, 7, 11, 0xFFFF0000};
    RegistryValue value = stringValue(randomUnits(random));
    value.type = random.coin() ? types::string : someTypes[random.below(someTypes.size())];
    if (random.coin()) {
        appendUnits(value.data, platform::WideString(1, WCHAR{0}));
    }
    if (random.below(4) == 0) {
        value.data.push_back(static_cast<std::byte>(random.below(256)));
    }
    if (random.below(4) == 0) {
        value.data.resize(random.below(9));
    }
    return value;
}

std::string randomName(test::RandomSamples& random) {
    std::string name = platform::toUtf8(randomUnits(random));
    std::erase(name, '\0');
    return name;
}

TEST(RegText, BringsBackEveryValueToTheByte) {
    test::RandomSamples random;
    for (int round = 0; round < 2000; ++round) {
        std::vector<RegistryChange> changes = {
            {Kind::createKey, RegistryRoot::localMachine, "Software\\A", {}, {}}};
        for (std::uint32_t count = random.below(6); count > 0; --count) {
            changes.push_back(setting(randomName(random), randomValue(random)));
        }
        const Bytes text = writeRegText(changes);
        const std::vector<RegistryChange> again = readRegText(text).changes;
        expectSame(again, changes);
        ASSERT_EQ(writeRegText(again), text);
    }
}

TEST(RegText, IsTheSameWhenItIsReadAndWrittenAgain) {
    const Bytes first = writeRegText(read(everything()).changes);
    EXPECT_EQ(writeRegText(readRegText(first).changes), first);
}

}  // namespace
}  // namespace korva::tool
