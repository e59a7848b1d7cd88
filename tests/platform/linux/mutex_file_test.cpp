// The files that mutexes are.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/named_mutex.h"
#include "platform/new_guid.h"
#include "platform/property_key.h"
#include "platform/registry.h"
#include "tests/support/child_process.h"
#include "tests/support/conversation.h"
#include "tests/support/environment.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

namespace fs = std::filesystem;

class MutexFile : public testing::Test {
protected:
    /// What a process without our privileges answers to the command and the name.
    [[nodiscard]] std::string answerOfAnother(const std::string& command) const {
        return test::run({.program = KORVA_SERVICE_COMPANION,
                          .input = command + " " + name + "\n",
                          .obeysPermissions = true})
            .output;
    }

    /// Makes the folder for the files, with none in it.
    void makeFolder() const {
        ASSERT_TRUE(NamedMutex::create("Global\\first"));
        ASSERT_TRUE(fs::is_empty(folder));
    }

    /// Leaves the file of a process that was killed.
    void abandon() const {
        test::Conversation other(KORVA_SERVICE_COMPANION);
        ASSERT_EQ(other.ask("hold " + name), "yes");
        other.kill();
        ASSERT_TRUE(fs::exists(file));
    }

    const test::OwnRegistry registry;
    const std::string guid = guidText(newGuid());
    const std::string name = "Global\\" + guid;
    const fs::path folder = registryPlace() + ".run";
    const fs::path file = folder / ("Global_" + guid + ".lock");
};

/// Files that the process makes are for its user only, for a time.
class PrivateFiles {
public:
    ~PrivateFiles() { umask(before); }

private:
    const mode_t before = umask(0077);
};

TEST_F(MutexFile, LiesBesideTheRegistryAsLongAsTheMutexIsHeld) {
    {
        const NamedMutex mutex = NamedMutex::create(name);
        ASSERT_TRUE(mutex);
        EXPECT_TRUE(fs::is_regular_file(file));
        EXPECT_EQ(fs::file_size(file), 0U);
    }
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(MutexFile, IsOneOverALinkToTheRegistry) {
    const NamedMutex mutex = NamedMutex::create(name);
    const std::string link = registryPlace() + "-link";
    fs::create_symlink(registryPlace(), link);
    const test::EnvironmentVariable other("KORVA_REGISTRY", link);
    EXPECT_TRUE(isMutexHeld(name));
}

TEST_F(MutexFile, IsAnotherOneWithAnotherRegistry) {
    const NamedMutex mutex = NamedMutex::create(name);
    const test::EnvironmentVariable other("KORVA_REGISTRY", registryPlace() + "-other");
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(MutexFile, GoesFromWhereItWasMade) {
    NamedMutex mutex = NamedMutex::create(name);
    const test::EnvironmentVariable other("KORVA_REGISTRY", registryPlace() + "-other");
    mutex = {};
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(MutexFile, IsMadeByNobodyWhoAsksOrRemoves) {
    EXPECT_FALSE(isMutexHeld(name));
    removeAbandonedMutex(name);
    EXPECT_FALSE(fs::exists(folder));
    const NamedMutex other = NamedMutex::create("Global\\other");
    EXPECT_FALSE(isMutexHeld(name));
    removeAbandonedMutex(name);
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(MutexFile, OfAKilledProcessStaysUntilItIsRemoved) {
    abandon();
    EXPECT_FALSE(isMutexHeld(name));
    EXPECT_TRUE(fs::exists(file));
    removeAbandonedMutex(name);
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(MutexFile, OfAKilledProcessGoesWithTheNextHolder) {
    abandon();
    ASSERT_TRUE(NamedMutex::create(name));
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(MutexFile, GoesWithTheLastOfSeveralHolders) {
    NamedMutex first = NamedMutex::create(name);
    NamedMutex second = NamedMutex::create(name);
    first = {};
    EXPECT_TRUE(fs::exists(file));
    second = {};
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(MutexFile, OfAnotherIsNotTakenAwayByAHolderThatLostItsOwn) {
    NamedMutex mutex = NamedMutex::create(name);
    ASSERT_TRUE(fs::remove(file));
    EXPECT_FALSE(isMutexHeld(name));
    const NamedMutex second = NamedMutex::create(name);
    mutex = {};
    EXPECT_TRUE(fs::exists(file));
    EXPECT_TRUE(isMutexHeld(name));
}

TEST_F(MutexFile, CanBeAskedByAllWhateverTheMaskOfItsMaker) {
    const PrivateFiles mask;
    const NamedMutex mutex = NamedMutex::create(name);
    struct stat found {};
    ASSERT_EQ(stat(file.c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 0777U, 0644U);
}

TEST_F(MutexFile, IsNotMadeInAFolderThatCanOnlyBeRead) {
    makeFolder();
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_EQ(answerOfAnother("hold"), "no\n");
    fs::permissions(folder, fs::perms::owner_all);
    EXPECT_EQ(answerOfAnother("hold"), "yes\n");
}

TEST_F(MutexFile, ThatCannotBeLookedAtCountsAsHeld) {
    makeFolder();
    EXPECT_EQ(answerOfAnother("asks"), "no\n");
    fs::permissions(folder, fs::perms::none);
    EXPECT_EQ(answerOfAnother("asks"), "yes\n");
    fs::permissions(folder, fs::perms::owner_all);
}

TEST_F(MutexFile, IsNoLinkToAnother) {
    makeFolder();
    const fs::path target = folder / "target";
    std::ofstream(target) << "kept";
    fs::create_symlink(target, file);
    EXPECT_FALSE(NamedMutex::create(name));
    EXPECT_FALSE(isMutexHeld(name));
    removeAbandonedMutex(name);
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(fs::file_size(target), 4U);
}

TEST_F(MutexFile, IsNoPipeThatOneWouldWaitFor) {
    makeFolder();
    ASSERT_EQ(mkfifo(file.c_str(), 0666), 0);
    EXPECT_FALSE(isMutexHeld(name));
    EXPECT_FALSE(NamedMutex::create(name));
    removeAbandonedMutex(name);
    EXPECT_TRUE(fs::is_fifo(file));
}

TEST_F(MutexFile, HasNoPlaceWhereTheRegistrysFolderIsNone) {
    const test::EnvironmentVariable other("KORVA_REGISTRY", "/dev/null/registry");
    EXPECT_FALSE(NamedMutex::create(name));
    EXPECT_FALSE(isMutexHeld(name));
    removeAbandonedMutex(name);
}

/// A copy of this process, which runs `action` and then waits for its end.
class ProcessCopy {
public:
    template <class Action>
    explicit ProcessCopy(const Action& action) {
        std::array<int, 2> done{};
        EXPECT_EQ(pipe(done.data()), 0);
        process = fork();
        if (process == 0) {
            action();
            _exit(write(done[1], "", 1) == 1 ? waitForSignal() : 1);
        }
        char ran = 0;
        EXPECT_EQ(read(done[0], &ran, 1), 1);
        close(done[0]);
        close(done[1]);
    }
    ~ProcessCopy() {
        kill(process, SIGKILL);
        waitpid(process, nullptr, 0);
    }
    ProcessCopy(const ProcessCopy&) = delete;
    ProcessCopy& operator=(const ProcessCopy&) = delete;

private:
    static int waitForSignal() {
        pause();
        return 1;
    }

    pid_t process = -1;
};

TEST_F(MutexFile, IsNotLetGoByACopyOfTheProcess) {
    NamedMutex mutex = NamedMutex::create(name);
    const ProcessCopy copy([&] { mutex = {}; });
    EXPECT_TRUE(isMutexHeld(name));
    EXPECT_TRUE(fs::exists(file));
}

TEST_F(MutexFile, IsLetGoForTheCopiesOfTheProcessToo) {
    NamedMutex mutex = NamedMutex::create(name);
    const ProcessCopy copy([] {});
    mutex = {};
    EXPECT_FALSE(isMutexHeld(name));
    EXPECT_FALSE(fs::exists(file));
}

}  // namespace
}  // namespace korva::platform
