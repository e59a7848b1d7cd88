#include "tests/apo/inf_file.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/unicode.h"
#include "tests/apo/inf_faults.h"

namespace korva::test {
namespace {

using Strings = std::vector<std::string>;

/// A text with the line ends of an INF file.
std::string infText(std::string_view lines) {
    std::string text;
    for (const char c : lines) {
        text += c == '\n' ? "\r\n" : std::string(1, c);
    }
    return text;
}

InfFile inf(std::string_view lines) {
    return InfFile(infText(lines));
}

std::string errorOf(std::string_view bytes) {
    try {
        const InfFile file(bytes);
        return "none";
    } catch (const InfError& error) {
        return error.what();
    }
}

std::string valueErrorOf(const std::string& line) {
    try {
        static_cast<void>(inf("[A]\n" + line + "\n").registryValues("A"));
        return "none";
    } catch (const InfError& error) {
        return error.what();
    }
}

/// A file in order, with one of everything that is followed.
const std::string whole = R"([Version]
Class = %Class%
[Manufacturer]
%Maker% = Models,NTamd64
[Models.NTamd64]
%Device% = Install,ID
[Install]
CopyFiles = Files
AddReg = Values
[Install.Services]
AddService = ,2
[Install.Components]
AddComponent = Part,,Component
[Install.Interfaces]
AddInterface = {guid},"name",Interface
[Interface]
AddReg = Values
[Component]
ComponentIDs = X
[Files]
a.dll
[Values]
HKR,"Key",Name,,"text"
[Values.security]
"D:P"
[DestinationDirs]
Files = 13
[SourceDisksNames]
1 = Disk
[SourceDisksFiles]
a.dll = 1
[SignatureAttributes]
a.dll = SignatureAttributes.PETrust
[SignatureAttributes.PETrust]
PETrust = true
[Strings]
Class = "C"
Maker = "M"
Device = "D"
)";

std::string replaced(std::string text, std::string_view old, std::string_view now) {
    const std::size_t at = text.find(old);
    EXPECT_NE(at, text.npos) << old;
    return text.replace(at, old.size(), now);
}

TEST(InfFile, HasSectionsOfKeysAndFields) {
    const InfFile file = inf("; nothing\n[One]\nkey = a, \"b,c\" ,,d ; rest\n\n x\n[Two]\n");
    const auto& lines = file.section("ONE");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].number, 3u);
    EXPECT_EQ(lines[0].key, "key");
    EXPECT_EQ(lines[0].fields, (Strings{"a", "b,c", "", "d"}));
    EXPECT_EQ(lines[1].key, "");
    EXPECT_EQ(lines[1].fields, Strings{"x"});
    EXPECT_TRUE(file.section("two").empty());
    EXPECT_EQ(file.sectionNames(), (Strings{"One", "Two"}));
    EXPECT_THROW(static_cast<void>(file.section("three")), InfError);
}

TEST(InfFile, LeavesWhatIsBetweenQuotes) {
    const InfFile file = inf("[A]\n\"a ; b\",\"say \"\"so\"\"\",\"c = d\"\n");
    EXPECT_EQ(file.section("A")[0].fields, (Strings{"a ; b", "say \"so\"", "c = d"}));
}

TEST(InfFile, PutsStringsInWhereverTheyAreNamed) {
    const InfFile file = inf(
        "[A]\n%Key% = %VALUE%,\"50%% of %value%\",%13%\\x\n[Strings]\nkey = k\nvalue = \"v,w\"\nrest = r\n");
    EXPECT_EQ(file.fields("A", "k"), (Strings{"v,w", "50% of v,w", "%13%\\x"}));
    EXPECT_EQ(file.unusedStrings(), std::set<std::string>{"rest"});
}

TEST(InfFile, ReadsUtf16WithItsMark) {
    const platform::WideString wide = platform::toWide(infText("[A]\n\"\xC3\xA4\xF0\x9F\x94\x8A\"\n"));
    const std::string bytes(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(WCHAR));
    EXPECT_EQ(InfFile("\xFF\xFE" + bytes).section("A")[0].fields, Strings{"\xC3\xA4\xF0\x9F\x94\x8A"});
    EXPECT_EQ(errorOf(infText("[A]\n\xC3\xA4\n")), "line 1: expected ASCII, or UTF-16 with its mark");
}

TEST(InfFile, RefusesWhatIsNoText) {
    EXPECT_EQ(errorOf("[A]\r\nx\n"), "line 2: expected an end of the line in two characters");
    EXPECT_EQ(errorOf("[A]\r\nx"), "line 2: expected an end of the line in two characters");
    EXPECT_EQ(errorOf(infText("x\n[A]\n")), "line 1: expected a section");
    EXPECT_EQ(errorOf(infText("[A]\n[B]\n[a]\n")), "line 3: expected each section once");
    EXPECT_EQ(errorOf(infText("[A]\nx,\\\ny\n")), "line 2: expected a line that doesn't go on in the next");
    EXPECT_EQ(errorOf(infText("[A]\n\"x\n")), "line 2: expected a quote that ends the text");
    EXPECT_EQ(errorOf(infText("[A]\n\"x\"y\n")), "line 2: expected quotes around the whole of a field");
    EXPECT_EQ(errorOf(infText("[A]\n%x%\n")), "line 2: expected a string x");
    EXPECT_EQ(errorOf(infText("[A]\n%x\n")), "line 2: expected a percent sign that ends the name");
    EXPECT_EQ(errorOf(infText("[Strings]\nx = a\nX = b\n")),
              "line 3: expected one text for a string, which is new");
}

TEST(InfFile, ReadsValuesOfEachKind) {
    const auto values = inf("[A]\n"
                            "HKR,\"K\\L\",,,\"text\"\n"
                            "HKLM,K,N,0x00010001,0xffffffff\n"
                            "HKR,K,N,0x00010000,\"a\",\"b\"\n"
                            "HKR,K,,0x00020000,\"%13%\\x\"\n"
                            "HKLM,K,,0x00000010\n")
                            .registryValues("A");
    ASSERT_EQ(values.size(), 5u);
    EXPECT_EQ(values[0].key, "K\\L");
    EXPECT_EQ(values[0].name, "");
    EXPECT_EQ(values[0].stored().type, platform::registry_type::string);
    EXPECT_EQ(values[1].stored().data, std::vector<std::byte>(4, std::byte{0xFF}));
    // Two strings of one character with their terminators, and one more.
    EXPECT_EQ(values[2].stored().data.size(), 10u);
    EXPECT_EQ(values[3].stored().type, platform::registry_type::expandString);
    EXPECT_EQ(values[4].flags, inf_flag::keyOnly);
}

TEST(InfFile, RefusesValuesThatAreNone) {
    EXPECT_EQ(valueErrorOf("HKX,K,N,,\"v\""), "line 2: expected a root of the registry");
    EXPECT_EQ(valueErrorOf("HKR,\"K\\\",N,,\"v\""), "line 2: expected a key without a backslash at an end");
    EXPECT_EQ(valueErrorOf("HKR,K,N,0x1,\"v\""), "line 2: expected flags that these files use");
    EXPECT_EQ(valueErrorOf("HKR,K,N,0xg,\"v\""), "line 2: expected a number of 32 bits");
    EXPECT_EQ(valueErrorOf("HKR,K,N"), "line 2: expected one value");
    EXPECT_EQ(valueErrorOf("HKR,K,N,,a,b"), "line 2: expected one value");
    EXPECT_EQ(valueErrorOf("HKR,K,N,0x00010001,0x100000000"), "line 2: expected a number of 32 bits");
    EXPECT_EQ(valueErrorOf("HKR,K,,0x00000010,1"), "line 2: expected no value");
}

TEST(InfFaults, AreNoneInAFileInOrder) {
    EXPECT_EQ(faultsOf(inf(whole)), Strings{});
}

TEST(InfFaults, TellOfReferencesThatLeadNowhere) {
    const std::pair<const char*, const char*> cases[] = {
        {"Models,NTamd64", "Models,NTx86"},
        {"Install,ID", "Elsewhere"},
        {"CopyFiles = Files", "CopyFiles = Elsewhere"},
        {"AddReg = Values", "AddReg = Elsewhere"},
        {"Part,,Component", "Part,,Elsewhere"},
        {"\"name\",Interface", "\"name\",Elsewhere"},
        {"[Component]", "[Elsewhere]"},
        {"[Interface]", "[Elsewhere]"},
        {"[Values]", "[Elsewhere]"},
        {"[SignatureAttributes.PETrust]", "[Elsewhere]"},
    };
    for (const auto& [old, now] : cases) {
        EXPECT_NE(faultsOf(inf(replaced(whole, old, now))), Strings{}) << old;
    }
}

TEST(InfFaults, TellOfFilesThatCantBeCopied) {
    for (const auto& [old, now] :
         {std::pair("a.dll = 1", "b.dll = 1"), std::pair("a.dll = 1", "a.dll = 2"),
          std::pair("Files = 13", "Others = 13"), std::pair("a.dll = Sig", "b.dll = Sig")}) {
        EXPECT_NE(faultsOf(inf(replaced(whole, old, now))), Strings{}) << old;
    }
}

TEST(InfFaults, TellOfWhatNobodyNames) {
    EXPECT_EQ(faultsOf(inf(whole + "More = x\n")), Strings{"nobody names the string more"});
    EXPECT_EQ(faultsOf(inf("[Lonely]\n" + whole)), Strings{"nobody names the section Lonely"});
}

TEST(InfFaults, TellOfValuesThatAreGivenTwice) {
    const std::string value = "HKR,\"Key\",Name,,\"text\"\n";
    EXPECT_EQ(faultsOf(inf(replaced(whole, value, value + "HKR,\"key\",NAME,,\"other\"\n"))),
              (Strings{"twice: hkr\\key @name", "twice: hkr\\key @name"}));
    EXPECT_EQ(faultsOf(inf(replaced(whole, value, value + "HKR,\"Key\",Other,,\"text\"\n"))), Strings{});
}

}  // namespace
}  // namespace korva::test
