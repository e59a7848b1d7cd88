#include <sqlite3.h>

#include <memory>

#include "tests/cli/registry_tool_test.h"

namespace korva::test {
namespace {

const std::string key = "HKLM\\Software\\Demo";

class RegistryFault : public RegistryToolTest {
protected:
    [[nodiscard]] Launch obeying(std::vector<std::string> arguments) const {
        Launch launch = registryLaunch(std::move(arguments));
        launch.obeysPermissions = true;
        return launch;
    }
    [[nodiscard]] std::unique_ptr<sqlite3, int (*)(sqlite3*)> openFile() const {
        sqlite3* file = nullptr;
        EXPECT_EQ(sqlite3_open(registryPath().c_str(), &file), SQLITE_OK);
        return {file, sqlite3_close};
    }
    void execute(const std::string& statement) const {
        EXPECT_EQ(sqlite3_exec(openFile().get(), statement.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    }
};

TEST_F(RegistryFault, AForeignFileIsRefusedAndLeftAlone) {
    writeBytes(registryPath(), "something else, long enough to be taken for a file of any kind");
    EXPECT_TRUE(failedWith(registry({"set", key, "n", "sz", "x"}),
                           {registryPath(), "no registry", "KORVA_REGISTRY"}));
    EXPECT_EQ(readBytes(registryPath()), "something else, long enough to be taken for a file of any kind");
}

TEST_F(RegistryFault, ADatabaseOfOthersIsRefusedAndLeftAlone) {
    execute("CREATE TABLE t(a)");
    const std::string before = readBytes(registryPath());
    EXPECT_TRUE(failedWith(registry({"list", "HKLM"}), {registryPath(), "no registry"}));
    EXPECT_EQ(readBytes(registryPath()), before);
}

TEST_F(RegistryFault, AFileOfANewerVersionIsRefused) {
    quietly({"create", key});
    execute("PRAGMA user_version = 1000");
    EXPECT_TRUE(failedWith(registry({"list", "HKLM"}), {registryPath(), "newer version"}));
}

TEST_F(RegistryFault, AReadOnlyFileCanBeReadAndNotWritten) {
    quietly({"set", key, "n", "sz", "x"});
    namespace fs = std::filesystem;
    fs::permissions(registryPath(), fs::perms::owner_read);
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    const Outcome written = run(obeying({"set", key, "n", "sz", "y"}));
    const Outcome read = run(obeying({"get", key, "n"}));
    fs::permissions(folder, fs::perms::owner_all);
    EXPECT_TRUE(failedWith(written, {"no right", registryPath()}));
    EXPECT_EQ(read.output, "x\n");
    EXPECT_EQ(output({"get", key, "n"}), "x\n");
}

TEST_F(RegistryFault, AFolderInThePlaceOfTheFileIsAnError) {
    std::filesystem::create_directory(registryPath());
    const Outcome outcome = registry({"list", "HKLM"});
    EXPECT_TRUE(failedWith(outcome, {registryPath()}));
}

TEST_F(RegistryFault, AFileThatCannotGrowLosesNothing) {
    quietly({"set", key, "n", "sz", "x"});
    Launch launch = registryLaunch({"set", key, "big", "binary", std::string(100'000, 'a')});
    launch.fileSizeLimit = 32 << 10;
    EXPECT_TRUE(failedWith(run(launch), {registryPath()}));
    EXPECT_EQ(output({"get", key, "n"}), "x\n");
    EXPECT_TRUE(failedWith(registry({"get", key, "big"}), {"no value"}));
}

TEST_F(RegistryFault, AFileThatAnotherKeepsLockedIsSaidToBe) {
    quietly({"set", key, "n", "sz", "x"});
    const auto other = openFile();
    ASSERT_EQ(sqlite3_exec(other.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_TRUE(
        failedWith(registry({"set", key, "n", "sz", "y"}), {registryPath(), "locked for over 5 seconds"}));
    EXPECT_EQ(output({"get", key, "n"}), "x\n");
}

}  // namespace
}  // namespace korva::test
