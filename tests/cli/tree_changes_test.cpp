#include "korva/registry/tree_changes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace korva::tool {
namespace {

platform::RegistryValue number(unsigned value, std::uint32_t type = platform::registry_type::binary) {
    return {type, {static_cast<std::byte>(value)}};
}

/// One word for each change.
std::vector<std::string> wordsFor(const TreeState& before, const TreeState& after) {
    std::vector<std::string> words;
    for (const TreeChange& change : changesBetween(before, after)) {
        switch (change.kind) {
            case TreeChange::Kind::createKey:
                words.push_back("+" + change.key);
                break;
            case TreeChange::Kind::deleteKey:
                words.push_back("-" + change.key);
                break;
            case TreeChange::Kind::setValue:
                words.push_back(change.key + "." + change.name + "=" +
                                std::to_string(std::to_integer<int>(change.value.data.at(0))));
                break;
            case TreeChange::Kind::deleteValue:
                words.push_back(change.key + "." + change.name + "-");
                break;
        }
    }
    return words;
}

using Words = std::vector<std::string>;

TEST(TreeChanges, AreNoneBetweenTwoOfTheSame) {
    const TreeState state = {{"A", {{"n", number(1)}}}, {"A\\B", {}}};
    EXPECT_EQ(wordsFor(state, state), Words());
    EXPECT_EQ(wordsFor({}, {}), Words());
}

TEST(TreeChanges, TellOfValuesThatAreNewOrOtherOrGone) {
    const TreeState before = {{"A", {{"gone", number(1)}, {"kept", number(2)}, {"other", number(3)}}}};
    const TreeState after = {{"A", {{"kept", number(2)}, {"new", number(5)}, {"other", number(4)}}}};
    EXPECT_EQ(wordsFor(before, after), Words({"A.gone-", "A.new=5", "A.other=4"}));
}

TEST(TreeChanges, TellOfAnotherTypeWithTheSameBytes) {
    const TreeState before = {{"A", {{"n", number(1)}}}};
    const TreeState after = {{"A", {{"n", number(1, 0)}}}};
    EXPECT_EQ(wordsFor(before, after), Words({"A.n=1"}));
}

TEST(TreeChanges, ShowNewKeysBeforeTheirValuesAndParentsFirst) {
    const TreeState after = {{"A", {}}, {"A B", {}}, {"A\\B", {{"n", number(1)}}}};
    EXPECT_EQ(wordsFor({}, after), Words({"+A", "+A B", "+A\\B", "A\\B.n=1"}));
}

TEST(TreeChanges, ShowDeletedKeysFromTheLowestUpWithoutTheirValues) {
    const TreeState before = {{"A", {{"n", number(1)}}}, {"A\\B", {{"n", number(1)}}}};
    EXPECT_EQ(wordsFor(before, {}), Words({"-A\\B", "-A"}));
}

TEST(TreeChanges, ShowDeletionsBeforeWhatIsNew) {
    const TreeState before = {{"A", {{"n", number(1)}}}, {"A\\old", {}}};
    const TreeState after = {{"A", {{"m", number(2)}}}, {"A\\new", {}}};
    EXPECT_EQ(wordsFor(before, after), Words({"-A\\old", "A.n-", "A.m=2", "+A\\new"}));
}

}  // namespace
}  // namespace korva::tool
