#include "platform/key_tree.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;
using KeyTree = RegistryTest;

TEST_F(KeyTree, GoesWithAllThatIsBelowIt) {
    setNumber(made("tree"), "v", 1);
    setNumber(made("tree\\a\\aa\\aaa"), "v", 1);
    made("tree\\a\\ab");
    made("tree\\b");
    made("beside");
    EXPECT_EQ(deleteKeyTree(key, "tree"), success);
    EXPECT_EQ(keyNames(key), std::vector<std::string>{"beside"});
}

TEST_F(KeyTree, GoesFromBelowKeysOnTheWayToIt) {
    made("way\\tree\\a");
    EXPECT_EQ(deleteKeyTree(key, "way\\tree"), success);
    EXPECT_EQ(openResult("way\\tree"), notFound);
    EXPECT_EQ(openResult("way"), success);
}

TEST_F(KeyTree, MayBeMissing) {
    EXPECT_EQ(deleteKeyTree(key, "missing"), success);
    EXPECT_EQ(deleteKeyTree(key, "missing\\below"), success);
}

TEST_F(KeyTree, MayBeManyKeysBesideEachOtherAndAbove) {
    for (int i = 0; i < 100; ++i) {
        made("tree\\" + std::to_string(i) + "\\below");
    }
    std::string deep = "tree\\deep";
    for (int i = 0; i < 60; ++i) {
        deep += "\\d";
    }
    made(deep);
    EXPECT_EQ(deleteKeyTree(key, "tree"), success);
    EXPECT_EQ(openResult("tree"), notFound);
}

// A buffer for the name of a sub-key begins at fewer.
TEST_F(KeyTree, MayHaveTheLongestNames) {
    const std::string longest(255, 'n');
    made("tree\\" + longest + "\\" + longest);
    std::string wide;
    for (int i = 0; i < 255; ++i) {
        wide += "\u20AC";
    }
    made("tree\\" + wide);
    EXPECT_EQ(deleteKeyTree(key, "tree"), success);
    EXPECT_EQ(openResult("tree"), notFound);
}

TEST_F(KeyTree, StaysOpenForOthersWhoFindItDeleted) {
    const RegistryKey top = made("tree");
    const RegistryKey below = made("tree\\a");
    EXPECT_EQ(deleteKeyTree(key, "tree"), success);
    for (const RegistryKey& deleted : {top, below}) {
        EXPECT_EQ(deleted.setValue("v", registry_type::none, {}), keyDeleted);
    }
}

TEST_F(KeyTree, LosesALinkThoughNotWhatItPointsAt) {
    setNumber(made("target\\below"), "v", 1);
    makeLink(made("tree\\a\\link"));
    EXPECT_EQ(deleteKeyTree(key, "tree"), success);
    EXPECT_EQ(openResult("tree"), notFound);
    EXPECT_EQ(openResult("target\\below"), success);
}

TEST_F(KeyTree, MayBeALinkItself) {
    makeLink(made("link"));
    EXPECT_EQ(deleteKeyTree(key, "link"), success);
    EXPECT_EQ(openResult("link"), notFound);
}

// Such a key is never opened, so its sub-keys are out of reach.
TEST_F(KeyTree, StaysWhereALinkHasSubKeysAndLosesAllElse) {
    made("tree\\a\\aa");
    made("tree\\link\\below");
    makeLink(made("tree\\link"));
    made("tree\\z\\zz");
    EXPECT_NE(deleteKeyTree(key, "tree"), success);
    EXPECT_EQ(openResult("tree\\link"), isLink);
    EXPECT_EQ(openResult("tree\\a"), notFound);
    EXPECT_EQ(openResult("tree\\z"), notFound);
}

TEST_F(KeyTree, GivesTheRegistrysRefusals) {
    made("tree\\a");
    EXPECT_EQ(deleteKeyTree(RegistryKey(), "tree"), invalidHandle);
    EXPECT_EQ(deleteKeyTree(key, "\xFF"), invalidParameter);
    EXPECT_EQ(openResult("tree\\a"), success);
}

TEST_F(KeyTree, IsNeverTheKeyThatItIsBelow) {
    made("a");
    EXPECT_EQ(deleteKeyTree(key, ""), invalidParameter);
    EXPECT_EQ(openResult("a"), success);
}

}  // namespace
}  // namespace korva::platform
