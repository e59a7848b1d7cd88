#include "platform/type_library.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/registry_values.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_tree.h"

namespace korva::platform {
namespace {

using Lines = std::vector<std::string>;
constexpr auto classes = RegistryRoot::classesRoot;
constexpr TypeLibrary someLibrary = {{0xABCDEF01, 0x2345, 0x6789, {1, 2, 3, 4, 5, 6, 7, 8}}, 1, 26, "Title"};
const std::string place = "TypeLib\\{ABCDEF01-2345-6789-0102-030405060708}";

class TypeLibraryTest : public testing::Test {
protected:
    test::OwnRegistry own;
};

TEST_F(TypeLibraryTest, IsFoundByItsIdentifierAndVersion) {
    EXPECT_EQ(registerTypeLibrary(someLibrary, "/a folder/library.so"), 0);

    EXPECT_EQ(test::treeLines(classes, place), (Lines{
                                                   "1.1a",
                                                   "1.1a @ = 'Title'",
                                                   "1.1a\\0",
                                                   "1.1a\\0\\win64",
                                                   "1.1a\\0\\win64 @ = '/a folder/library.so'",
                                                   "1.1a\\FLAGS",
                                                   "1.1a\\FLAGS @ = '0'",
                                                   "1.1a\\HELPDIR",
                                                   "1.1a\\HELPDIR @ = '/a folder'",
                                               }));
}

TEST_F(TypeLibraryTest, IsRegisteredOverAFormerOne) {
    EXPECT_EQ(registerTypeLibrary(someLibrary, "/first/library.so"), 0);
    EXPECT_EQ(registerTypeLibrary(someLibrary, "/second/library.so"), 0);
    EXPECT_EQ(test::valueAt(classes, place + "\\1.1a\\0\\win64", ""), "'/second/library.so'");
}

TEST_F(TypeLibraryTest, LeavesNothingButTheListOfThem) {
    ASSERT_EQ(registerTypeLibrary(someLibrary, "/folder/library.so"), 0);
    EXPECT_EQ(unregisterTypeLibrary(someLibrary), 0);
    EXPECT_EQ(test::treeLines(classes, ""), Lines{"TypeLib"});
}

TEST_F(TypeLibraryTest, LeavesOtherVersions) {
    constexpr TypeLibrary other = {someLibrary.id, 2, 0, "Other"};
    ASSERT_EQ(registerTypeLibrary(someLibrary, "/folder/library.so"), 0);
    ASSERT_EQ(registerTypeLibrary(other, "/folder/library.so"), 0);

    EXPECT_EQ(unregisterTypeLibrary(someLibrary), 0);

    EXPECT_FALSE(test::hasKey(classes, place + "\\1.1a"));
    EXPECT_EQ(test::valueAt(classes, place + "\\2.0", ""), "'Other'");
}

TEST_F(TypeLibraryTest, MayNotBeRegistered) {
    EXPECT_EQ(unregisterTypeLibrary(someLibrary), 0);
    ASSERT_EQ(registerTypeLibrary(someLibrary, "/folder/library.so"), 0);
    EXPECT_EQ(unregisterTypeLibrary(someLibrary), 0);
    EXPECT_EQ(unregisterTypeLibrary(someLibrary), 0);
}

TEST_F(TypeLibraryTest, IsRefusedUnderAPathThatIsNoText) {
    EXPECT_EQ(registerTypeLibrary(someLibrary, "/\xFF.so"), hresultOf(registry_result::invalidData));
    EXPECT_EQ(test::treeLines(classes, ""), Lines{});
}

}  // namespace
}  // namespace korva::platform
