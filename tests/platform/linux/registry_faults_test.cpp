// The registry's file where something is wrong with it, or with its place.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <thread>

#include "platform/registry.h"
#include "tests/platform/linux/raw_file.h"
#include "tests/support/child_process.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

using namespace registry_result;
namespace files = std::filesystem;
using test::RawFile;

std::string contentsOf(const files::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Every file of a folder but SQLite's index of the journal, which readers write too.
std::map<std::string, std::string> contentsBelow(const files::path& folder) {
    std::map<std::string, std::string> all;
    for (const auto& entry : files::directory_iterator(folder)) {
        if (!entry.path().string().ends_with("-shm")) {
            all[entry.path().filename().string()] = contentsOf(entry.path());
        }
    }
    return all;
}

RegistryResult resultOfOpening() {
    RegistryResult result = success;
    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine, &result);
    EXPECT_EQ(static_cast<bool>(machine), result == success);
    return result;
}

RegistryResult set(const RegistryKey& key, int number) {
    return key.setValue("x", registry_type::dword, std::as_bytes(std::span(&number, 1)));
}

class RegistryFaults : public testing::Test {
protected:
    [[nodiscard]] static files::path folder() { return files::path(registryPlace()).parent_path(); }

    /// A path in an empty folder, which the registry is to be at from now on.
    std::string moveToNewPlace() {
        const files::path place = folder() / "other";
        files::create_directory(place);
        setenv("KORVA_REGISTRY", (place / "registry").c_str(), 1);
        return registryPlace();
    }

    [[nodiscard]] RegistryKey openKey() const {
        RegistryKey key;
        EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine)
                      .open(registry.key(), RegistryAccess::readWrite, key),
                  success);
        return key;
    }

    [[nodiscard]] test::Launch childThat(const std::string& command, std::vector<std::string> more) const {
        more.insert(more.begin(), {command, registry.key()});
        return {.program = KORVA_REGISTRY_CHILD, .arguments = std::move(more)};
    }

    test::OwnRegistry registry;
};

TEST_F(RegistryFaults, LeaveAFileOfAnotherKindAsItIs) {
    const std::string path = moveToNewPlace();
    for (const std::string& text : {std::string("something else\n"), std::string(8192, '\0'),
                                    std::string("S"), std::string("SQLite format 3\0", 16)}) {
        std::ofstream(path, std::ios::binary) << text;
        const auto before = contentsBelow(folder());

        EXPECT_EQ(resultOfOpening(), notRegistryFile);

        EXPECT_EQ(contentsBelow(folder()), before);
    }
}

TEST_F(RegistryFaults, LeaveAnotherProgramsDatabaseAsItIs) {
    const std::string elsewhere = registryPlace() + "-foreign";
    const RawFile theirs(elsewhere);
    theirs.run(
        "PRAGMA journal_mode = WAL; CREATE TABLE t(a); PRAGMA wal_checkpoint; INSERT INTO t VALUES(1)");
    const std::string path = moveToNewPlace();
    // With a journal that waits to be brought into the file.
    files::copy_file(elsewhere, path);
    files::copy_file(elsewhere + "-wal", path + "-wal");
    const auto before = contentsBelow(folder());

    EXPECT_EQ(resultOfOpening(), notRegistryFile);

    EXPECT_EQ(contentsBelow(folder()), before);
}

TEST_F(RegistryFaults, LeaveAFileOfANewerVersionAsItIs) {
    const std::string original = registryPlace();
    const RawFile newer(original);
    newer.run("PRAGMA user_version = 2");
    // Once with the number in the journal still, and once in the file.
    for (const bool isInFile : {false, true}) {
        if (isInFile) {
            newer.run("PRAGMA wal_checkpoint(TRUNCATE)");
        }
        setenv("KORVA_REGISTRY", original.c_str(), 1);
        const files::path place = folder() / (isInFile ? "file" : "journal");
        files::create_directory(place);
        files::copy_file(original, place / "registry");
        files::copy_file(original + "-wal", place / "registry-wal");
        setenv("KORVA_REGISTRY", (place / "registry").c_str(), 1);
        const auto before = contentsBelow(place);

        EXPECT_EQ(resultOfOpening(), newerFile);

        EXPECT_EQ(contentsBelow(place), before);
    }
}

TEST_F(RegistryFaults, TellOfADamagedFile) {
    const std::string original = registryPlace();
    RawFile(original).run("PRAGMA wal_checkpoint(TRUNCATE)");
    std::string bytes = contentsOf(original);
    std::fill(bytes.begin() + 4096, bytes.end(), '\xA5');
    const std::string path = moveToNewPlace();
    std::ofstream(path, std::ios::binary) << bytes;

    RegistryResult result = success;
    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine, &result);
    RegistryKey key;
    EXPECT_EQ(result != success ? result : machine.open(registry.key(), RegistryAccess::read, key), corrupt);

    EXPECT_EQ(contentsOf(path), bytes);
}

TEST_F(RegistryFaults, TellThatAnotherWriterKeepsTheFileWhileReadersGoOn) {
    const RegistryKey key = openKey();
    ASSERT_EQ(set(key, 1), success);
    const RawFile other(registryPlace());
    other.run("BEGIN IMMEDIATE");
    std::atomic<bool> isOver{false};
    RegistryResult result = success;
    const auto begin = std::chrono::steady_clock::now();
    std::thread writer([&] {
        result = set(key, 2);
        isOver = true;
    });

    int reads = 0;
    for (; !isOver; ++reads) {
        RegistryValue value;
        ASSERT_EQ(key.readValue("x", value), success);
    }
    writer.join();

    EXPECT_EQ(result, busy);
    EXPECT_GT(reads, 1000);
    const auto waited = std::chrono::steady_clock::now() - begin;
    EXPECT_GE(waited, std::chrono::seconds(5));
    EXPECT_LE(waited, std::chrono::seconds(20));
    other.run("ROLLBACK");
    EXPECT_EQ(set(key, 3), success);
}

TEST_F(RegistryFaults, LetAFileBeReadThatMayNotBeWritten) {
    ASSERT_EQ(test::run(childThat("set", {"x", "8"})).exitCode, 0);
    chmod(registryPlace().c_str(), 0444);
    test::Launch reader = childThat("get", {"x"});
    reader.obeysPermissions = true;
    test::Launch writer = childThat("set", {"x", "1"});
    writer.obeysPermissions = true;

    EXPECT_EQ(test::run(reader).output, "7\n");
    EXPECT_EQ(test::run(writer).output, "5\n");
}

TEST_F(RegistryFaults, LetAFileBeReadInAFolderThatMayNotBeWritten) {
    // A copy, which this process hasn't open: so there are no files beside it.
    const std::string original = registryPlace();
    ASSERT_EQ(set(openKey(), 7), success);
    RawFile(original).run("PRAGMA wal_checkpoint(TRUNCATE)");
    const std::string path = moveToNewPlace();
    files::copy_file(original, path);
    chmod(path.c_str(), 0444);
    chmod(folder().c_str(), 0555);
    test::Launch reader = childThat("get", {"x"});
    reader.obeysPermissions = true;
    test::Launch writer = childThat("set", {"x", "1"});
    writer.obeysPermissions = true;

    EXPECT_EQ(test::run(reader).output, "7\n");
    EXPECT_EQ(test::run(writer).output, "5\n");
    EXPECT_EQ(contentsBelow(folder()).size(), 1u);
    chmod(folder().c_str(), 0755);
}

TEST_F(RegistryFaults, TellOfAFullDiskAndKeepWhatWasWritten) {
    test::Launch writer = childThat("set", {"x", "1000", "100000"});
    writer.fileSizeLimit = 1'000'000;
    writer.ignoredSignals = {SIGXFSZ};

    const test::Outcome outcome = test::run(writer);

    EXPECT_EQ(outcome.output, "112\n");
    const auto lines = std::count(outcome.error.begin(), outcome.error.end(), '\n');
    ASSERT_GE(lines, 2);
    EXPECT_EQ(test::run(childThat("get", {"x"})).output, std::to_string(lines - 1) + "\n");
}

TEST_F(RegistryFaults, TellThatThereIsNoPlace) {
    setenv("KORVA_REGISTRY", "/proc/self/none/registry", 1);
    EXPECT_EQ(resultOfOpening(), ioFailed);
    setenv("KORVA_REGISTRY", folder().c_str(), 1);
    EXPECT_EQ(resultOfOpening(), ioFailed);
    const std::string file = folder() / "file";
    std::ofstream(file) << "text";
    setenv("KORVA_REGISTRY", (file + "/below").c_str(), 1);
    EXPECT_EQ(resultOfOpening(), ioFailed);
}

TEST_F(RegistryFaults, LeaveNothingBesideADevice) {
    const std::string path = moveToNewPlace();
    // What the null device is.
    if (mknod(path.c_str(), S_IFCHR | 0666, makedev(1, 3)) != 0) {
        GTEST_SKIP() << "no right to make a device";
    }

    EXPECT_EQ(resultOfOpening(), ioFailed);

    EXPECT_EQ(std::distance(files::directory_iterator(folder()), files::directory_iterator()), 1);
}

TEST_F(RegistryFaults, TellThatNoMoreFilesMayBeOpen) {
    moveToNewPlace();
    ASSERT_EQ(resultOfOpening(), success);
    const std::string made = registryPlace();
    setenv("KORVA_REGISTRY", (folder() / "elsewhere").c_str(), 1);
    ASSERT_EQ(resultOfOpening(), success);
    setenv("KORVA_REGISTRY", made.c_str(), 1);
    rlimit usual{};
    getrlimit(RLIMIT_NOFILE, &usual);
    const rlimit none{.rlim_cur = 0, .rlim_max = usual.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);

    const RegistryResult result = resultOfOpening();

    setrlimit(RLIMIT_NOFILE, &usual);
    EXPECT_EQ(result, ioFailed);
    EXPECT_EQ(resultOfOpening(), success);
}

TEST_F(RegistryFaults, KeepWhatOnlyTheJournalHasWhenBothAreCopied) {
    ASSERT_EQ(set(openKey(), 7), success);
    const std::string original = registryPlace();
    ASSERT_GT(files::file_size(original + "-wal"), 0u);
    const std::string path = moveToNewPlace();
    files::copy_file(original, path);
    files::copy_file(original + "-wal", path + "-wal");

    EXPECT_EQ(test::run(childThat("get", {"x"})).output, "7\n");

    // Whoever closes it last leaves nothing but the file and the bell.
    std::set<std::string> left;
    for (const auto& entry : files::directory_iterator(folder())) {
        left.insert(entry.path().filename().string());
    }
    EXPECT_EQ(left, (std::set<std::string>{"registry", "registry-bell"}));
}

TEST_F(RegistryFaults, BeginAnewBesideTheJournalOfAFileThatIsGone) {
    ASSERT_EQ(set(openKey(), 7), success);
    const std::string original = registryPlace();
    const std::string path = moveToNewPlace();
    files::copy_file(original + "-wal", path + "-wal");
    files::copy_file(original + "-shm", path + "-shm");

    EXPECT_EQ(test::run(childThat("get", {"x"})).output, "2\n");

    EXPECT_EQ(resultOfOpening(), success);
    EXPECT_EQ(test::integrityOf(path), "ok");
}

TEST_F(RegistryFaults, BeginAnewWhereTheFileWasDeleted) {
    RegistryKey old = openKey();
    ASSERT_EQ(set(old, 1), success);
    files::remove(registryPlace());

    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine);
    RegistryKey key;
    EXPECT_EQ(machine.open(registry.key(), RegistryAccess::read, key), notFound);
    ASSERT_EQ(machine.create(registry.key(), RegistryAccess::readWrite, key), success);
    ASSERT_EQ(set(key, 2), success);

    // The end of the old one takes nothing from the new one.
    old = RegistryKey();
    ASSERT_EQ(set(key, 3), success);
    EXPECT_EQ(test::run(childThat("get", {"x"})).output, "3\n");
}

TEST_F(RegistryFaults, LeaveOldKeysGoodWhenTheRegistryMoves) {
    const RegistryKey old = openKey();
    moveToNewPlace();
    ASSERT_EQ(resultOfOpening(), success);
    EXPECT_EQ(set(old, 1), success);
    RegistryValue value;
    EXPECT_EQ(old.readValue("x", value), success);
}

// What processes wake one another by lies beside the file, not beside a link to it.
TEST_F(RegistryFaults, AreNoneWhereALinkLeadsToTheFile) {
    ASSERT_EQ(set(openKey(), 7), success);
    const files::path place = folder() / "other";
    files::create_directory(place);
    files::create_symlink(registryPlace(), place / "link");
    setenv("KORVA_REGISTRY", (place / "link").c_str(), 1);

    const RegistryKey key = openKey();
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);
    ASSERT_EQ(set(key, 8), success);

    EXPECT_EQ(contentsBelow(place).size(), 1U);
    EXPECT_EQ(test::run(childThat("get", {"x"})).output, "8\n");
}

TEST_F(RegistryFaults, MakeTheUsersOwnFolderForNobodyElse) {
    const files::path state = folder() / "state";
    unsetenv("KORVA_REGISTRY");
    setenv("XDG_STATE_HOME", state.c_str(), 1);
    EXPECT_EQ(registryPlace(), (state / "korva" / "registry").string());

    ASSERT_EQ(resultOfOpening(), success);

    EXPECT_EQ(files::status(state / "korva").permissions(), files::perms::owner_all);
    setenv("XDG_STATE_HOME", "not/absolute", 1);
    setenv("HOME", "/home/somebody", 1);
    EXPECT_EQ(registryPlace(), "/home/somebody/.local/state/korva/registry");
}

TEST_F(RegistryFaults, UndoEveryChangeOfAListOfWhichOneFails) {
    const RegistryKey key = openKey();
    using Kind = RegistryChange::Kind;
    const std::vector<RegistryChange> changes{
        {.kind = Kind::setValue, .path = registry.key(), .name = "x", .value = {registry_type::dword, {}}},
        {.kind = Kind::createKey, .path = registry.key() + "\\made"},
        {.kind = Kind::createKey, .path = "no\\\\path"}};
    std::size_t failed = 0;

    EXPECT_EQ(applyRegistryChanges(changes, &failed), invalidParameter);

    EXPECT_EQ(failed, 2u);
    RegistryValue value;
    EXPECT_EQ(key.readValue("x", value), notFound);
    RegistryKey made;
    EXPECT_EQ(key.open("made", RegistryAccess::read, made), notFound);
}

}  // namespace
}  // namespace korva::platform
