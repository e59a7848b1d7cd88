#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;
using RegistryKeysTest = RegistryTest;

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    for (std::size_t i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

/// A path of as many names.
std::string deepPath(std::size_t depth) {
    std::string path = repeated("k\\", depth);
    path.pop_back();
    return path;
}

TEST_F(RegistryKeysTest, OpenGivesNothingWhereNoKeyIs) {
    EXPECT_EQ(openResult("missing"), notFound);
    EXPECT_EQ(openResult("missing\\below"), notFound);
}

TEST_F(RegistryKeysTest, OpenLeavesItsResultAsItWasWhenItFails) {
    RegistryKey opened = made("sub");
    const RegistryKey before = opened;
    EXPECT_EQ(key.open("missing", RegistryAccess::read, opened), notFound);
    EXPECT_EQ(key.open("\xFF", RegistryAccess::read, opened), invalidParameter);
    EXPECT_EQ(opened, before);
}

TEST_F(RegistryKeysTest, OpenMayPutItsResultInThePlaceOfItsOwnKey) {
    setNumber(made("a\\b"), "v", 5);
    RegistryKey walking = key;
    EXPECT_EQ(walking.open("a", RegistryAccess::read, walking), success);
    EXPECT_EQ(walking.open("b", RegistryAccess::read, walking), success);
    EXPECT_EQ(dataOf(walking, "v"), bytes({5, 0, 0, 0}));
}

TEST_F(RegistryKeysTest, OpenOfAnEmptyPathOpensTheKeyItselfOnceMore) {
    RegistryKey again;
    ASSERT_EQ(key.open("", RegistryAccess::read, again), success);
    EXPECT_NE(again, key);

    setNumber(key, "v", 9);
    EXPECT_EQ(dataOf(again, "v"), bytes({9, 0, 0, 0}));
    EXPECT_EQ(again.setValue("v", registry_type::binary, {}), accessDenied);
}

TEST_F(RegistryKeysTest, CreateOfAnEmptyPathOpensTheKeyItself) {
    RegistryKey again;
    bool created = true;
    ASSERT_EQ(key.create("", RegistryAccess::readWrite, again, &created), success);
    EXPECT_FALSE(created);
    EXPECT_NE(again, key);
    setNumber(again, "v", 9);
    EXPECT_EQ(dataOf(key, "v"), bytes({9, 0, 0, 0}));
}

TEST_F(RegistryKeysTest, CreateMakesAllThatIsMissingAndTellsWhetherItDid) {
    RegistryKey opened;
    bool created = false;
    ASSERT_EQ(key.create("a\\b\\c", RegistryAccess::readWrite, opened, &created), success);
    EXPECT_TRUE(created);
    EXPECT_EQ(keyNames(key), std::vector<std::string>{"a"});
    EXPECT_EQ(openResult("a\\b"), success);
    EXPECT_EQ(openResult("a\\b\\c"), success);

    ASSERT_EQ(key.create("a\\b\\c", RegistryAccess::readWrite, opened, &created), success);
    EXPECT_FALSE(created);
    ASSERT_EQ(key.create("a\\b\\d", RegistryAccess::readWrite, opened, &created), success);
    EXPECT_TRUE(created);
}

TEST_F(RegistryKeysTest, KeysForEveryoneAreMadeAsAnyOther) {
    RegistryKey opened;
    bool created = false;
    ASSERT_EQ(key.create("a\\b", RegistryAccess::readWrite, opened, &created, RegistrySharing::everyone),
              success);
    EXPECT_TRUE(created);
    EXPECT_EQ(opened.setValue("v", registry_type::binary, bytes({1})), success);
    EXPECT_EQ(openResult("a"), success);
    ASSERT_EQ(key.create("a\\b", RegistryAccess::read, opened, &created, RegistrySharing::everyone), success);
    EXPECT_FALSE(created);
    RegistryValue value;
    EXPECT_EQ(opened.readValue("v", value), success);
}

TEST_F(RegistryKeysTest, CreatedKeysAreEmpty) {
    const RegistryKey created = made("a");
    EXPECT_TRUE(valueNames(created).empty());
    EXPECT_TRUE(keyNames(created).empty());
}

TEST_F(RegistryKeysTest, CreateWithReadingAccessGivesAKeyThatReadsOnly) {
    RegistryKey opened;
    ASSERT_EQ(key.create("a", RegistryAccess::read, opened), success);
    EXPECT_EQ(opened.setValue("v", registry_type::binary, {}), accessDenied);
}

TEST_F(RegistryKeysTest, NamesAreComparedWithoutRegardToCase) {
    const std::vector<std::pair<std::string, std::string>> alike = {
        {"Software", "sOFTWARE"},                      // ASCII
        {"\u00C4\u00D6\u00DE", "\u00E4\u00F6\u00FE"},  // Latin-1
        {"\u0160", "\u0161"},                          // Latin Extended-A
        {"\u03A3\u03A9", "\u03C3\u03C9"},              // Greek
        {"\u0416\u042F", "\u0436\u044F"},              // Cyrillic
    };
    for (const auto& [upper, lower] : alike) {
        setNumber(made(upper), "v", 1);
        EXPECT_EQ(openResult(lower), success) << lower;
        RegistryKey opened;
        bool created = true;
        EXPECT_EQ(key.create(lower + "\\x", RegistryAccess::read, opened, &created), success);
        EXPECT_TRUE(created);
        EXPECT_EQ(key.create(lower, RegistryAccess::read, opened, &created), success);
        EXPECT_FALSE(created) << lower;
        EXPECT_EQ(key.deleteTree(lower), success);
        EXPECT_EQ(openResult(upper), notFound);
    }
}

TEST_F(RegistryKeysTest, NamesThatDifferInMoreThanCaseAreDifferentKeys) {
    const std::vector<std::string> names = {"a",   "a ",  " a",  "a.",     "\u00E4", "aa",
                                            "a/b", "a,b", "{a}", "\u00DF", "ss"};
    for (const std::string& name : names) {
        RegistryKey opened;
        bool created = false;
        EXPECT_EQ(key.create(name, RegistryAccess::read, opened, &created), success);
        EXPECT_TRUE(created) << name;
    }
    auto found = keyNames(key);
    auto expected = names;
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found, expected);
}

TEST_F(RegistryKeysTest, NamesStayAsTheyWereFirstWritten) {
    made("MiXed \u00C4\u03A3\u0416");
    made("mixed \u00E4\u03C3\u0436");
    EXPECT_EQ(keyNames(key), std::vector<std::string>{"MiXed \u00C4\u03A3\u0416"});
}

TEST_F(RegistryKeysTest, NamesOutsideTheBasicPlaneAreKept) {
    made("\U0001F3B5");
    EXPECT_EQ(keyNames(key), std::vector<std::string>{"\U0001F3B5"});
    EXPECT_EQ(openResult("\U0001F3B5"), success);
}

TEST_F(RegistryKeysTest, KeyNameGivesEveryNameOnce) {
    std::vector<std::string> expected;
    for (int i = 100; i < 150; ++i) {
        expected.push_back("k" + std::to_string(i));
        made(expected.back());
    }
    auto found = keyNames(key);
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, expected);
}

TEST_F(RegistryKeysTest, KeyNameEndsPastTheLastOne) {
    made("only");
    std::string name = "as it was";
    EXPECT_EQ(key.keyName(1, name), noMoreItems);
    EXPECT_EQ(key.keyName(0xFFFFFFFF, name), noMoreItems);
    EXPECT_EQ(name, "as it was");
    EXPECT_EQ(key.keyName(0, name), success);
    EXPECT_EQ(name, "only");
}

TEST_F(RegistryKeysTest, KeyNameGivesOnlyTheKeysOwnNames) {
    made("a\\b\\c");
    EXPECT_EQ(keyNames(key), std::vector<std::string>{"a"});
    EXPECT_EQ(keyNames(made("a")), std::vector<std::string>{"b"});
}

TEST_F(RegistryKeysTest, DeleteKeyRefusesAKeyWithSubKeys) {
    made("a\\b");
    EXPECT_EQ(key.deleteKey("a"), accessDenied);
    EXPECT_EQ(openResult("a\\b"), success);

    EXPECT_EQ(key.deleteKey("a\\b"), success);
    EXPECT_EQ(key.deleteKey("a"), success);
    EXPECT_EQ(openResult("a"), notFound);
}

TEST_F(RegistryKeysTest, DeleteKeyTakesTheValuesAlong) {
    setNumber(made("a"), "v", 1);
    ASSERT_EQ(key.deleteKey("a"), success);
    EXPECT_TRUE(valueNames(made("a")).empty());
}

TEST_F(RegistryKeysTest, DeleteOfAMissingKeySaysSo) {
    EXPECT_EQ(key.deleteKey("missing"), notFound);
    EXPECT_EQ(key.deleteKey("missing\\below"), notFound);
    EXPECT_EQ(key.deleteTree("missing"), notFound);
    EXPECT_EQ(key.deleteTree("missing\\below"), notFound);
}

TEST_F(RegistryKeysTest, DeleteNeverTakesTheKeyItself) {
    setNumber(key, "v", 1);
    made("a");
    EXPECT_EQ(key.deleteKey(""), invalidParameter);
    EXPECT_EQ(key.deleteTree(""), invalidParameter);
    EXPECT_EQ(dataOf(key, "v"), bytes({1, 0, 0, 0}));
    EXPECT_EQ(openResult("a"), success);
}

TEST_F(RegistryKeysTest, DeleteTreeTakesAllBelowAndNothingElse) {
    for (const char* path : {"a\\b\\c", "a\\d", "ab", "b\\a"}) {
        setNumber(made(path), "v", 1);
    }
    const RegistryKey inside = made("a\\b");
    ASSERT_EQ(key.deleteTree("a"), success);

    EXPECT_EQ(openResult("a"), notFound);
    EXPECT_EQ(openResult("a\\b\\c"), notFound);
    EXPECT_EQ(inside.flush(), keyDeleted);
    EXPECT_EQ(dataOf(made("ab"), "v"), bytes({1, 0, 0, 0}));
    EXPECT_EQ(dataOf(made("b\\a"), "v"), bytes({1, 0, 0, 0}));
}

TEST_F(RegistryKeysTest, DeleteTreeTakesAWideAndDeepTree) {
    for (int i = 0; i < 20; ++i) {
        made("a\\" + std::to_string(i) + "\\" + deepPath(20));
    }
    EXPECT_EQ(key.deleteTree("a"), success);
    EXPECT_TRUE(keyNames(key).empty());
}

TEST_F(RegistryKeysTest, PathsMayBeDeep) {
    const std::string path = deepPath(200);
    setNumber(made(path), "v", 1);
    RegistryKey opened;
    ASSERT_EQ(key.open(path, RegistryAccess::read, opened), success);
    EXPECT_EQ(dataOf(opened, "v"), bytes({1, 0, 0, 0}));
    EXPECT_EQ(key.deleteTree("k"), success);
    EXPECT_EQ(openResult("k"), notFound);
}

TEST_F(RegistryKeysTest, PathsOfMoreThan512NamesAreRefused) {
    RegistryKey opened;
    EXPECT_EQ(key.create(deepPath(513), RegistryAccess::read, opened), invalidParameter);
    EXPECT_EQ(openResult(deepPath(513)), invalidParameter);
    EXPECT_TRUE(keyNames(key).empty());
}

TEST_F(RegistryKeysTest, NamesTakeUpTo255UnitsOfUtf16) {
    // Each of these is one unit, and two or three bytes; the last is two units.
    for (const std::string unit : {"x", "\u00E4", "\u20AC"}) {
        made(repeated(unit, 255));
        EXPECT_EQ(openResult(repeated(unit, 255)), success);
        RegistryKey opened;
        EXPECT_EQ(key.create(repeated(unit, 256), RegistryAccess::read, opened), invalidParameter);
        EXPECT_EQ(openResult(repeated(unit, 256) + "\\a"), invalidParameter);
        EXPECT_EQ(key.deleteKey(repeated(unit, 256)), invalidParameter);
        EXPECT_EQ(key.deleteTree(repeated(unit, 256)), invalidParameter);
    }
    EXPECT_EQ(openResult(repeated("\U0001F3B5", 127)), notFound);
    EXPECT_EQ(openResult(repeated("\U0001F3B5", 128)), invalidParameter);
    EXPECT_EQ(keyNames(key).size(), 3u);
}

TEST_F(RegistryKeysTest, PathsThatAreNoTextAreRefused) {
    using namespace std::string_literals;
    for (const std::string& path : {"\xFF"s, "a\\\xC3"s, "\xED\xA0\x80"s, "a\0b"s, "\0"s, "a\0"s}) {
        RegistryKey opened;
        EXPECT_EQ(key.create(path, RegistryAccess::read, opened), invalidParameter);
        EXPECT_EQ(openResult(path), invalidParameter);
        EXPECT_EQ(key.deleteKey(path), invalidParameter);
        EXPECT_EQ(key.deleteTree(path), invalidParameter);
    }
    EXPECT_TRUE(keyNames(key).empty());
}

TEST_F(RegistryKeysTest, PathsMayEndInOneBackslash) {
    made("a\\b\\");
    EXPECT_EQ(openResult("a\\b"), success);
    EXPECT_EQ(openResult("a\\b\\"), success);
    EXPECT_EQ(keyNames(made("a\\")), std::vector<std::string>{"b"});
    EXPECT_EQ(key.deleteKey("a\\b\\"), success);
    EXPECT_EQ(key.deleteTree("a\\"), success);
    EXPECT_TRUE(keyNames(key).empty());
}

TEST_F(RegistryKeysTest, PathsWithAnEmptyNameAreRefused) {
    made("a\\b");
    for (const char* path : {"\\", "\\\\", "\\a", "a\\\\b", "a\\\\", "\\a\\b"}) {
        RegistryKey opened;
        EXPECT_EQ(key.create(path, RegistryAccess::read, opened), invalidParameter) << path;
        EXPECT_EQ(openResult(path), invalidParameter) << path;
        EXPECT_EQ(key.deleteKey(path), invalidParameter) << path;
        EXPECT_EQ(key.deleteTree(path), invalidParameter) << path;
    }
    EXPECT_EQ(openResult("a\\b"), success);
}

TEST_F(RegistryKeysTest, KeysThatPointElsewhereAreRefused) {
    const RegistryKey link = made("link");
    makeLink(link);

    RegistryKey opened;
    bool created = true;
    EXPECT_EQ(openResult("link"), isLink);
    EXPECT_EQ(key.create("LINK", RegistryAccess::readWrite, opened, &created), isLink);
    EXPECT_EQ(link.open("", RegistryAccess::read, opened), isLink);
    EXPECT_FALSE(opened);

    ASSERT_EQ(link.deleteValue("symboliclinkvalue"), success);
    EXPECT_EQ(openResult("link"), success);
}

TEST_F(RegistryKeysTest, KeysPointElsewhereWhateverTheValueHolds) {
    int number = 0;
    for (const std::uint32_t type : {registry_type::none, registry_type::binary, std::uint32_t{6}}) {
        for (const std::size_t size : {0u, 1u, 300u}) {
            const std::string name = std::to_string(number++);
            EXPECT_EQ(made(name).setValue("SYMBOLICLINKVALUE", type, someBytes(size)), success);
            EXPECT_EQ(openResult(name), isLink) << type << " " << size;
        }
    }
}

TEST_F(RegistryKeysTest, KeysBelowOneThatPointsElsewhereAreOpened) {
    makeLink(made("link"));
    RegistryKey opened;
    EXPECT_EQ(key.create("link\\below", RegistryAccess::read, opened), success);
    EXPECT_EQ(openResult("link\\below"), success);
}

TEST_F(RegistryKeysTest, KeysThatPointElsewhereCanBeDeleted) {
    makeLink(made("a"));
    makeLink(made("b"));
    makeLink(made("tree\\c"));
    EXPECT_EQ(key.deleteKey("a"), success);
    EXPECT_EQ(key.deleteTree("b"), success);
    EXPECT_EQ(key.deleteTree("tree"), success);
    EXPECT_TRUE(keyNames(key).empty());
}

}  // namespace
}  // namespace korva::platform
