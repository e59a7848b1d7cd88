#include "apo/registration/registry_script.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/registry_values.h"
#include "platform/stored_values.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_tree.h"

namespace korva::apo {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;
using Lines = std::vector<std::string>;

/// Scripts of what lies below the test's own key.
class RegistryScriptTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(
            RegistryKey::root(RegistryRoot::localMachine).open(own.key(), RegistryAccess::readWrite, key), 0);
    }

    [[nodiscard]] RegistryScript scriptOf(const std::string& keys) const {
        std::string text = keys;
        std::string path = own.key();
        while (!path.empty()) {
            const std::size_t parent = path.rfind('\\');
            text = "NoRemove '" + path.substr(parent + 1) + "' { " + text + " }";
            path.resize(parent == path.npos ? 0 : parent);
        }
        return readRegistryScript("HKLM { " + text + " }", {});
    }

    [[nodiscard]] HRESULT apply(const std::string& keys) const { return applyRegistryScript(scriptOf(keys)); }
    [[nodiscard]] HRESULT undo(const std::string& keys) const { return undoRegistryScript(scriptOf(keys)); }

    [[nodiscard]] Lines lines() const { return test::treeLines(RegistryRoot::localMachine, own.key()); }

    /// A key of somebody else's, with a value.
    void put(const std::string& path, const std::string& name) const {
        const platform::RegistryValue value = platform::numberValue(1);
        RegistryKey made;
        ASSERT_EQ(key.create(path, RegistryAccess::readWrite, made), 0);
        ASSERT_EQ(made.setValue(name, value.type, value.data), 0);
    }

    test::OwnRegistry own;
    RegistryKey key;
};

const std::string everything =
    "NoRemove Kept = s 'container' { Plain = s 'text' { val n = d '13' } "
    "ForceRemove Whole { Below = s '' } }";
const Lines allLines = {
    "Kept",
    "Kept @ = 'container'",
    "Kept\\Plain",
    "Kept\\Plain @ = 'text'",
    "Kept\\Plain @n = 13",
    "Kept\\Whole",
    "Kept\\Whole\\Below",
    "Kept\\Whole\\Below @ = ''",
};

TEST_F(RegistryScriptTest, WritesItsKeysAndValues) {
    EXPECT_EQ(apply(everything), 0);
    EXPECT_EQ(lines(), allLines);
}

TEST_F(RegistryScriptTest, WritesTheSameTheSecondTime) {
    EXPECT_EQ(apply(everything), 0);
    EXPECT_EQ(apply(everything), 0);
    EXPECT_EQ(lines(), allLines);
}

TEST_F(RegistryScriptTest, LeavesWhatOthersHaveInItsKeys) {
    put("Kept\\Plain", "theirs");
    EXPECT_EQ(apply("NoRemove Kept { Plain = s 'text' }"), 0);
    EXPECT_EQ(lines(), (Lines{"Kept", "Kept\\Plain", "Kept\\Plain @ = 'text'", "Kept\\Plain @theirs = 1"}));
}

TEST_F(RegistryScriptTest, MakesAForcedKeyAnew) {
    put("Whole\\Deep\\Deeper", "theirs");
    EXPECT_EQ(apply("ForceRemove Whole = s 'ours'"), 0);
    EXPECT_EQ(lines(), (Lines{"Whole", "Whole @ = 'ours'"}));
}

TEST_F(RegistryScriptTest, LeavesOnlyKeptKeysWhenItIsUndone) {
    ASSERT_EQ(apply(everything), 0);
    EXPECT_EQ(undo(everything), 0);
    EXPECT_EQ(lines(), (Lines{"Kept", "Kept @ = 'container'"}));
}

TEST_F(RegistryScriptTest, UndoesOnlyItsOwnValuesInAPlainKey) {
    ASSERT_EQ(apply(everything), 0);
    put("Kept\\Plain", "theirs");
    EXPECT_EQ(undo(everything), 0);
    EXPECT_EQ(lines(), (Lines{"Kept", "Kept @ = 'container'", "Kept\\Plain", "Kept\\Plain @theirs = 1"}));
}

TEST_F(RegistryScriptTest, LeavesAPlainKeyWithTheKeysOfOthers) {
    ASSERT_EQ(apply("Plain = s 'text'"), 0);
    put("Plain\\Theirs", "v");
    EXPECT_EQ(undo("Plain = s 'text'"), 0);
    EXPECT_EQ(lines(), (Lines{"Plain", "Plain\\Theirs", "Plain\\Theirs @v = 1"}));
}

TEST_F(RegistryScriptTest, TakesAForcedKeyAwayWithWhatOthersHaveThere) {
    ASSERT_EQ(apply("ForceRemove Whole = s 'ours'"), 0);
    put("Whole\\Theirs", "v");
    EXPECT_EQ(undo("ForceRemove Whole = s 'ours'"), 0);
    EXPECT_EQ(lines(), Lines{});
}

TEST_F(RegistryScriptTest, IsUndoneWhereNothingIsThere) {
    EXPECT_EQ(undo(everything), 0);
    EXPECT_EQ(lines(), Lines{});

    ASSERT_EQ(apply(everything), 0);
    EXPECT_EQ(undo(everything), 0);
    EXPECT_EQ(undo(everything), 0);
}

TEST_F(RegistryScriptTest, IsUndoneWhereAPartOfItIsMissing) {
    put("Kept\\Plain", "n");
    EXPECT_EQ(undo(everything), 0);
    EXPECT_EQ(lines(), Lines{"Kept"});
}

TEST_F(RegistryScriptTest, StopsAtTheFirstFailure) {
    put("b", "SymbolicLinkValue");
    EXPECT_EQ(apply("a = s 'A' b = s 'B' c = s 'C'"), platform::hresultOf(platform::registry_result::isLink));
    EXPECT_EQ(test::valueAt(RegistryRoot::localMachine, own.key() + "\\a", ""), "'A'");
    EXPECT_FALSE(test::hasKey(RegistryRoot::localMachine, own.key() + "\\c"));
}

TEST_F(RegistryScriptTest, IsUndoneAroundAFailure) {
    put("b", "SymbolicLinkValue");
    put("a", "v");
    put("c", "v");
    EXPECT_EQ(undo("a { val v = d '1' } b { val v = d '1' } c { val v = d '1' }"),
              platform::hresultOf(platform::registry_result::isLink));
    EXPECT_FALSE(test::hasKey(RegistryRoot::localMachine, own.key() + "\\a"));
    EXPECT_FALSE(test::hasKey(RegistryRoot::localMachine, own.key() + "\\c"));
}

}  // namespace
}  // namespace korva::apo
