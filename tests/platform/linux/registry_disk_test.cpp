// The registry where the disk takes no more, at each write in turn.
#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "platform/wait_handles.h"
#include "tests/platform/linux/faulty_disk.h"
#include "tests/platform/linux/raw_file.h"
#include "tests/support/child_process.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

using namespace registry_result;
namespace files = std::filesystem;
using test::FaultyDisk;
using Fault = FaultyDisk::Fault;

/// A value of several pages that is all of one number.
std::vector<std::byte> pagesOf(int number) {
    return std::vector<std::byte>(9000, static_cast<std::byte>(number));
}

RegistryResult set(const RegistryKey& key, int number) {
    return key.setValue("x", registry_type::binary, pagesOf(number));
}

/// The number that the whole value has; -1 for none, -2 if it is torn.
int numberIn(const RegistryKey& key, const std::string& name = "x") {
    RegistryValue value;
    if (key.readValue(name, value) != success) {
        return -1;
    }
    const int number = static_cast<int>(value.data.at(0));
    return value.data == pagesOf(number) ? number : -2;
}

class RegistryDisk : public testing::Test {
protected:
    RegistryDisk() {
        EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine)
                      .open(registry.key(), RegistryAccess::readWrite, key),
                  success);
    }

    /// A path in an empty folder, which the registry is to be at from now on.
    static void moveToNewPlace() {
        const std::string place = registryPlace() + "-new";
        files::create_directory(place);
        setenv("KORVA_REGISTRY", (place + "/registry").c_str(), 1);
    }

    test::OwnRegistry registry;
    RegistryKey key;
};

struct Kind {
    Fault fault;
    RegistryResult result;
};

class RegistryDiskWithAFault : public RegistryDisk, public testing::WithParamInterface<Kind> {};

INSTANTIATE_TEST_SUITE_P(, RegistryDiskWithAFault,
                         testing::Values(Kind{Fault::full, diskFull}, Kind{Fault::broken, ioFailed}),
                         [](const auto& tested) {
                             return tested.param.fault == Fault::full ? "Full" : "Broken";
                         });

TEST_P(RegistryDiskWithAFault, KeepsTheOldValueWholeAtWhicheverWriteItIs) {
    ASSERT_EQ(set(key, 1), success);
    int failures = 0;
    for (std::int64_t room = 0;; room += 700) {
        RegistryResult result = success;
        bool wasGood = false;
        {
            const FaultyDisk disk(GetParam().fault, room);
            result = set(key, 2);
            wasGood = FaultyDisk::isGood();
            EXPECT_EQ(numberIn(key), result == success ? 2 : 1) << room;
        }
        if (wasGood) {
            ASSERT_EQ(result, success);
            break;
        }
        ++failures;
        ASSERT_EQ(result, GetParam().result) << room;
        // Once there is room again, all goes on.
        ASSERT_EQ(set(key, 3), success) << room;
        ASSERT_EQ(set(key, 1), success) << room;
    }
    EXPECT_GT(failures, 10);
    EXPECT_EQ(test::integrityOf(registryPlace()), "ok");
}

TEST_P(RegistryDiskWithAFault, LeavesAFileThatCanBeMadeLater) {
    moveToNewPlace();
    int failures = 0;
    for (std::int64_t room = 0;; room += 1500) {
        RegistryResult result = success;
        bool wasGood = false;
        {
            const FaultyDisk disk(GetParam().fault, room);
            static_cast<void>(RegistryKey::root(RegistryRoot::localMachine, &result));
            wasGood = FaultyDisk::isGood();
        }
        if (wasGood) {
            ASSERT_EQ(result, success);
            break;
        }
        ++failures;
        ASSERT_EQ(result, GetParam().result) << room;
    }
    EXPECT_GT(failures, 5);

    RegistryKey made;
    ASSERT_EQ(RegistryKey::root(RegistryRoot::localMachine).create("a", RegistryAccess::readWrite, made),
              success);
    EXPECT_EQ(set(made, 1), success);
    EXPECT_EQ(test::integrityOf(registryPlace()), "ok");
}

TEST_P(RegistryDiskWithAFault, TakesAllOfAListOfChangesOrNone) {
    using Step = RegistryChange::Kind;
    std::vector<RegistryChange> changes;
    for (int i = 0; i < 5; ++i) {
        changes.push_back({.kind = Step::setValue,
                           .path = registry.key() + "\\k" + std::to_string(i),
                           .name = "x",
                           .value = {registry_type::binary, pagesOf(7)}});
    }
    changes.push_back({.kind = Step::deleteTree, .path = registry.key() + "\\old"});
    RegistryKey old;
    ASSERT_EQ(key.create("old\\below", RegistryAccess::readWrite, old), success);
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);
    int failures = 0;
    for (std::int64_t room = 0;; room += 3000) {
        const FaultyDisk disk(GetParam().fault, room);
        const RegistryResult result = applyRegistryChanges(changes);
        if (FaultyDisk::isGood()) {
            ASSERT_EQ(result, success);
            break;
        }
        ++failures;
        ASSERT_EQ(result, GetParam().result) << room;
        std::string name;
        ASSERT_EQ(key.keyName(0, name), success);
        EXPECT_EQ(name, "old");
        EXPECT_EQ(key.keyName(1, name), noMoreItems);
        EXPECT_EQ(old.valueName(0, 512, name), noMoreItems);
        // What was undone is no change.
        EXPECT_FALSE(watch.take()) << room;
    }
    EXPECT_GT(failures, 10);
    const std::array handles{watch.handle()};
    EXPECT_EQ(waitForHandles(handles, 20'000), 0);
    for (std::uint32_t i = 0; i < 5; ++i) {
        RegistryKey made;
        ASSERT_EQ(key.open("k" + std::to_string(i), RegistryAccess::read, made), success);
        EXPECT_EQ(numberIn(made), 7);
    }
    std::string name;
    EXPECT_EQ(old.keyName(0, name), keyDeleted);
}

TEST_F(RegistryDisk, KeepsTheLastValueWhenItFillsUpOverManyWrites) {
    // Enough for the journal to be brought into the file in between.
    const FaultyDisk disk(Fault::full, 5'000'000);
    int last = 0;
    RegistryResult result = success;
    while (result == success) {
        last = (last + 1) % 200;
        result = set(key, last);
    }
    EXPECT_EQ(result, diskFull);
    EXPECT_EQ(numberIn(key), (last + 199) % 200);
}

TEST_F(RegistryDisk, LeavesNothingTornOfAWriterThatIsKilledAtAnyWrite) {
    ASSERT_EQ(set(key, 1), success);
    test::Launch writer{.program = KORVA_REGISTRY_CHILD,
                        .arguments = {"set", registry.key() + "\\new", "y", "3", "9000"}};
    int kills = 0;
    test::Outcome outcome;
    for (std::int64_t room = 0; outcome.exitCode != 0; room += 1500) {
        writer.environment["DISK_ROOM"] = std::to_string(room);
        outcome = test::run(writer);
        ASSERT_TRUE(outcome.exitCode == 0 || outcome.signal == SIGKILL) << outcome.output;
        kills += outcome.signal == SIGKILL ? 1 : 0;

        // What it said it had written is there.
        RegistryKey made;
        const bool isMade = key.open("new", RegistryAccess::read, made) == success;
        RegistryValue value;
        if (!isMade || made.readValue("y", value) != success) {
            EXPECT_EQ(outcome.error, "") << room;
        } else {
            int number = -1;
            ASSERT_EQ(value.data.size(), 9000u);
            std::memcpy(&number, value.data.data(), sizeof number);
            EXPECT_GE(number + 1, std::count(outcome.error.begin(), outcome.error.end(), '\n')) << room;
        }
        ASSERT_EQ(numberIn(key), 1) << room;
    }
    EXPECT_GT(kills, 10);
    EXPECT_EQ(set(key, 2), success);
    EXPECT_EQ(test::integrityOf(registryPlace()), "ok");
}

TEST_F(RegistryDisk, LeavesAFileThatCanBeMadeByTheNextWhenItsMakerIsKilled) {
    const std::string folder = registryPlace() + "-killed-";
    test::Launch writer{.program = KORVA_REGISTRY_CHILD, .arguments = {"set", "a", "y", "1"}};
    test::Outcome outcome;
    int kills = 0;
    for (std::int64_t room = 0; outcome.exitCode != 0; room += 2500) {
        const std::string path = folder + std::to_string(room) + "/registry";
        writer.environment["KORVA_REGISTRY"] = path;
        writer.environment["DISK_ROOM"] = std::to_string(room);
        outcome = test::run(writer);
        ASSERT_TRUE(outcome.exitCode == 0 || outcome.signal == SIGKILL) << outcome.output;
        kills += outcome.signal == SIGKILL ? 1 : 0;

        setenv("KORVA_REGISTRY", path.c_str(), 1);
        RegistryKey made;
        ASSERT_EQ(RegistryKey::root(RegistryRoot::localMachine).create("b", RegistryAccess::readWrite, made),
                  success)
            << room;
        EXPECT_EQ(set(made, 5), success);
        EXPECT_EQ(test::integrityOf(path), "ok");
    }
    EXPECT_GT(kills, 5);
}

}  // namespace
}  // namespace korva::platform
