#include "platform/registry_health.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "tests/platform/linux/raw_file.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

using namespace registry_result;
namespace files = std::filesystem;

class RegistryHealthTest : public testing::Test {
protected:
    [[nodiscard]] static std::string bytes() {
        std::ifstream file(registryPlace(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// What the registry is from now on.
    void become(const std::string& contents) const {
        const std::string path = registryPlace() + "-other";
        std::ofstream(path, std::ios::binary) << contents;
        setenv("KORVA_REGISTRY", path.c_str(), 1);
    }

    const test::OwnRegistry own;
};

TEST_F(RegistryHealthTest, OfASoundRegistryIsSound) {
    const RegistryHealth health = examineRegistry();
    EXPECT_EQ(health.result, success);
    EXPECT_TRUE(health.isThere);
    EXPECT_EQ(health.damage, "");
    EXPECT_TRUE(health.isWritable);
    EXPECT_TRUE(health.isFolderWritable);
    EXPECT_GT(health.freeBytes, 0u);
}

TEST_F(RegistryHealthTest, OfAMissingFileMakesNone) {
    const std::string none = registryPlace() + "-none/registry";
    setenv("KORVA_REGISTRY", none.c_str(), 1);
    const RegistryHealth health = examineRegistry();
    EXPECT_EQ(health.result, success);
    EXPECT_FALSE(health.isThere);
    EXPECT_FALSE(files::exists(none));
    EXPECT_FALSE(files::exists(files::path(none).parent_path()));
}

TEST_F(RegistryHealthTest, OfWhatIsNoRegistryTellsTheResultAndLeavesItAlone) {
    become(std::string(4096, 'x'));
    EXPECT_EQ(examineRegistry().result, notRegistryFile);
    EXPECT_EQ(bytes(), std::string(4096, 'x'));
    setenv("KORVA_REGISTRY", files::temp_directory_path().c_str(), 1);
    EXPECT_EQ(examineRegistry().result, ioFailed);
}

TEST_F(RegistryHealthTest, OfANewerVersionTellsTheResult) {
    test::RawFile(registryPlace()).run("PRAGMA user_version = 2; PRAGMA wal_checkpoint(TRUNCATE)");
    EXPECT_EQ(examineRegistry().result, newerFile);
}

TEST_F(RegistryHealthTest, NamesTheDamageOfAFileThatWasCutShortOrOverwritten) {
    test::RawFile(registryPlace()).run("PRAGMA wal_checkpoint(TRUNCATE)");
    const std::string whole = bytes();
    ASSERT_GT(whole.size(), 2u * 4096);
    become(whole.substr(0, whole.size() - 4096));
    EXPECT_NE(examineRegistry().damage, "");
    EXPECT_EQ(examineRegistry().result, success);
    std::string overwritten = whole;
    overwritten.replace(4096, 4096, 4096, '\xA5');
    become(overwritten);
    EXPECT_NE(examineRegistry().damage, "");
    // Also the page with the names of all tables.
    overwritten = whole;
    overwritten.replace(100, 3996, 3996, '\xA5');
    become(overwritten);
    EXPECT_NE(examineRegistry().damage, "");
}

TEST_F(RegistryHealthTest, FollowsALinkToTheFile) {
    const std::string link = registryPlace() + "-link";
    files::create_symlink(registryPlace(), link);
    setenv("KORVA_REGISTRY", link.c_str(), 1);
    EXPECT_TRUE(examineRegistry().isThere);
    EXPECT_EQ(examineRegistry().result, success);
}

}  // namespace
}  // namespace korva::platform
