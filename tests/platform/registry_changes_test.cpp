#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;
using Kind = RegistryChange::Kind;

class RegistryChangesTest : public RegistryTest {
protected:
    [[nodiscard]] RegistryChange change(Kind kind, const std::string& path, std::string name = {},
                                        Bytes data = {}) const {
        return {.kind = kind,
                .path = own.key() + "\\" + path,
                .name = std::move(name),
                .value = {.type = registry_type::binary, .data = std::move(data)}};
    }
};

TEST_F(RegistryChangesTest, AreMadeInTheirOrder) {
    setNumber(made("old\\below"), "v", 1);
    setNumber(made("kept"), "gone", 1);
    setNumber(made("kept"), "stays", 1);
    const std::vector<RegistryChange> changes = {
        change(Kind::createKey, "new\\a"),
        change(Kind::setValue, "kept", "v", bytes({1})),
        change(Kind::setValue, "kept", "v", bytes({2})),
        change(Kind::deleteValue, "kept", "gone"),
        change(Kind::deleteTree, "old"),
        change(Kind::setValue, "twice", "v", bytes({3})),
        change(Kind::deleteTree, "twice"),
        change(Kind::createKey, "twice"),
    };
    ASSERT_EQ(applyRegistryChanges(changes), success);

    EXPECT_EQ(openResult("new\\a"), success);
    EXPECT_EQ(valueNames(made("kept")).size(), 2u);
    EXPECT_EQ(dataOf(made("kept"), "v"), bytes({2}));
    EXPECT_EQ(dataOf(made("kept"), "stays"), bytes({1, 0, 0, 0}));
    EXPECT_EQ(openResult("old"), notFound);
    EXPECT_TRUE(valueNames(made("twice")).empty());
}

TEST_F(RegistryChangesTest, MakeTheKeysOnTheWayToAValue) {
    ASSERT_EQ(applyRegistryChanges(std::vector{change(Kind::setValue, "a\\b\\c", "v", bytes({1}))}), success);
    EXPECT_EQ(dataOf(made("a\\b\\c"), "v"), bytes({1}));
}

TEST_F(RegistryChangesTest, KeepTypeAndBytesOfAValue) {
    RegistryChange set = change(Kind::setValue, "a", "v", bytes({'M', 'F', 'X'}));
    set.value.type = registry_type::string;
    ASSERT_EQ(applyRegistryChanges(std::vector{set}), success);
    RegistryValue value;
    ASSERT_EQ(made("a").readValue("v", value), success);
    EXPECT_EQ(value.type, registry_type::string);
    EXPECT_EQ(value.data, bytes({'M', 'F', 'X'}));
}

TEST_F(RegistryChangesTest, SetTheDefaultValueOfAKey) {
    ASSERT_EQ(applyRegistryChanges(std::vector{change(Kind::setValue, "a", "", bytes({1}))}), success);
    EXPECT_EQ(dataOf(made("a"), ""), bytes({1}));
}

TEST_F(RegistryChangesTest, LeaveAKeyAloneThatIsThereAlready) {
    setNumber(made("a\\b"), "v", 1);
    ASSERT_EQ(
        applyRegistryChanges(std::vector{change(Kind::createKey, "a"), change(Kind::createKey, "a\\b")}),
        success);
    EXPECT_EQ(dataOf(made("a\\b"), "v"), bytes({1, 0, 0, 0}));
}

TEST_F(RegistryChangesTest, FindNoFaultInDeletingWhatIsMissing) {
    made("a");
    const std::vector<RegistryChange> changes = {
        change(Kind::deleteValue, "a", "missing"),
        change(Kind::deleteValue, "missing\\below", "v"),
        change(Kind::deleteTree, "missing"),
        change(Kind::deleteTree, "missing\\below"),
    };
    EXPECT_EQ(applyRegistryChanges(changes), success);
    EXPECT_EQ(openResult("missing"), notFound);
    EXPECT_EQ(openResult("a"), success);
}

TEST_F(RegistryChangesTest, MayBeNone) {
    EXPECT_EQ(applyRegistryChanges({}), success);
}

TEST_F(RegistryChangesTest, TakeEachItsOwnRoot) {
    const RegistryKey user = RegistryKey::root(RegistryRoot::currentUser);
    const std::string name = "Software\\KorvaTest" + own.key().substr(own.key().rfind('\\') + 1);
    const std::vector<RegistryChange> changes = {
        {.kind = Kind::setValue,
         .root = RegistryRoot::currentUser,
         .path = name,
         .name = "v",
         .value = {.type = registry_type::binary, .data = bytes({1})}},
        change(Kind::setValue, "a", "v", bytes({2})),
    };
    ASSERT_EQ(applyRegistryChanges(changes), success);

    RegistryKey opened;
    ASSERT_EQ(user.open(name, RegistryAccess::read, opened), success);
    EXPECT_EQ(dataOf(opened, "v"), bytes({1}));
    EXPECT_EQ(dataOf(made("a"), "v"), bytes({2}));
    EXPECT_EQ(user.deleteTree(name), success);
}

TEST_F(RegistryChangesTest, TellWhichOneFailedAndMakeNoneAfterIt) {
    makeLink(made("link"));
    const std::vector<std::pair<RegistryChange, RegistryResult>> failing = {
        {change(Kind::setValue, "link", "v", bytes({1})), isLink},
        {change(Kind::deleteValue, "link", "v"), isLink},
        {change(Kind::createKey, "link"), isLink},
        {change(Kind::createKey, "a\\\xFF"), invalidParameter},
        {change(Kind::deleteTree, "a\\\\b"), invalidParameter},
        {change(Kind::setValue, "a", "\xFF", bytes({1})), invalidParameter},
        {change(Kind::deleteValue, "link2", "\xFF"), invalidParameter},
    };
    made("link2");
    for (const auto& [bad, expected] : failing) {
        const std::vector<RegistryChange> changes = {change(Kind::createKey, "link2"), bad,
                                                     change(Kind::createKey, "after")};
        std::size_t failedIndex = 99;
        EXPECT_EQ(applyRegistryChanges(changes, &failedIndex), expected);
        EXPECT_EQ(failedIndex, 1u);
        EXPECT_EQ(applyRegistryChanges(changes), expected);
        EXPECT_EQ(openResult("after"), notFound);
    }
}

TEST_F(RegistryChangesTest, EndBeforeTheOneAtWhichTheyAreCancelled) {
    static int asked = 0;
    asked = 0;
    const std::vector<RegistryChange> changes = {change(Kind::createKey, "a"), change(Kind::createKey, "b"),
                                                 change(Kind::createKey, "c")};
    std::size_t failedIndex = 99;
    EXPECT_EQ(applyRegistryChanges(changes, &failedIndex, [] { return ++asked == 2; }), cancelled);
    EXPECT_EQ(failedIndex, 1u);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(openResult("b"), notFound);
    EXPECT_EQ(openResult("c"), notFound);
    EXPECT_EQ(applyRegistryChanges(changes, &failedIndex, [] { return false; }), success);
    EXPECT_EQ(openResult("c"), success);
}

TEST_F(RegistryChangesTest, NeverDeleteARoot) {
    const std::vector<RegistryChange> changes = {{.kind = Kind::deleteTree, .path = ""}};
    EXPECT_EQ(applyRegistryChanges(changes), invalidParameter);
    EXPECT_EQ(key.flush(), success);
}

}  // namespace
}  // namespace korva::platform
