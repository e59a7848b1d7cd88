// The registry's file with bytes in it that nobody of us wrote.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/platform/linux/raw_file.h"
#include "tests/support/own_registry.h"

namespace korva::platform {
namespace {

using namespace registry_result;
namespace files = std::filesystem;
using test::RawFile;

std::string contentsOf(const std::string& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

RegistryResult set(const RegistryKey& key, const std::string& name, int number) {
    return key.setValue(name, registry_type::dword, std::as_bytes(std::span(&number, 1)));
}

class RegistryDamage : public testing::Test {
protected:
    RegistryDamage() {
        const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine);
        for (int i = 0; i < 60; ++i) {
            const std::string path = "Demo\\Some key number " + std::to_string(i) + "\\below";
            RegistryKey key;
            EXPECT_EQ(machine.create(path, RegistryAccess::readWrite, key), success);
            for (const char* const name : {"first", "second", "third"}) {
                EXPECT_EQ(set(key, name, i), success);
            }
        }
        RawFile(registryPlace()).run("PRAGMA wal_checkpoint(TRUNCATE)");
        whole = contentsOf(registryPlace());
        folder = registryPlace() + "-damaged";
    }

    /// The registry is these bytes now.
    void become(const std::string& bytes) const {
        // Whoever has it open lets go of the one before.
        setenv("KORVA_REGISTRY", (folder + "-none").c_str(), 1);
        static_cast<void>(RegistryKey::root(RegistryRoot::localMachine));
        files::remove_all(folder);
        files::create_directory(folder);
        std::ofstream(folder + "/registry", std::ios::binary) << bytes;
        setenv("KORVA_REGISTRY", (folder + "/registry").c_str(), 1);
    }

    test::OwnRegistry registry;
    std::string whole;
    std::string folder;
};

bool isKnown(RegistryResult result) {
    constexpr std::array known = {success,     notFound,  accessDenied, outOfMemory, diskFull,
                                  noMoreItems, isLink,    corrupt,      ioFailed,    notRegistryFile,
                                  keyDeleted,  newerFile, moreData};
    return std::find(known.begin(), known.end(), result) != known.end();
}

/// Each name and value below a key; the results that are none of the header's, and how many looks failed.
struct Walk {
    std::vector<RegistryResult> unknown{};
    int failures = 0;
    int steps = 0;

    bool isGood(RegistryResult result) {
        if (!isKnown(result)) {
            unknown.push_back(result);
        }
        failures += result == success || result == noMoreItems ? 0 : 1;
        return result == success && ++steps < 5000;
    }

    void below(const RegistryKey& key, int depth) {
        std::string name;
        RegistryValue value;
        for (std::uint32_t i = 0; isGood(key.valueName(i, 512, name)); ++i) {
            isGood(key.readValue(name, value));
        }
        for (std::uint32_t i = 0; depth < 10 && isGood(key.keyName(i, name)); ++i) {
            RegistryKey found;
            if (isGood(key.open(name, RegistryAccess::read, found))) {
                below(found, depth + 1);
            }
        }
    }
};

TEST_F(RegistryDamage, OfAnyKindIsAResultAndNoMore) {
    const std::uint32_t seed = std::random_device{}();
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    int failures = 0;
    for (int round = 0; round < 60; ++round) {
        std::string bytes = whole;
        for (int i = 0; i < 40; ++i) {
            bytes[100 + random() % (bytes.size() - 100)] = static_cast<char>(random());
        }
        become(bytes);

        Walk walk;
        RegistryResult result = success;
        const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine, &result);
        if (walk.isGood(result)) {
            walk.below(machine, 0);
            RegistryKey made;
            if (walk.isGood(
                    machine.create("Demo\\Some key number 30\\new", RegistryAccess::readWrite, made))) {
                walk.isGood(set(made, "x", 1));
            }
            walk.isGood(machine.deleteTree("Demo"));
        }
        EXPECT_EQ(walk.unknown, std::vector<RegistryResult>());
        failures += walk.failures > 0 ? 1 : 0;
    }
    EXPECT_GT(failures, 10);
}

TEST_F(RegistryDamage, OfOneTableLeavesTheOthersReadable) {
    // The values' first page.
    const std::size_t page =
        std::stoul(
            RawFile(registryPlace()).answer("SELECT rootpage FROM sqlite_schema WHERE name = 'vals'")) -
        1;
    std::string bytes = whole;
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(page * 4096), 4096, '\xA5');
    become(bytes);

    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine);
    ASSERT_TRUE(machine);
    std::string name;
    EXPECT_EQ(machine.keyName(0, name), success);
    RegistryValue value{.type = 77, .data = {}};
    EXPECT_EQ(machine.readValue("x", value), corrupt);
    EXPECT_EQ(value.type, 77u);
    EXPECT_EQ(set(machine, "x", 1), corrupt);
    RegistryKey key;
    EXPECT_EQ(machine.open("Demo", RegistryAccess::read, key), corrupt);
    EXPECT_FALSE(key);
    using Kind = RegistryChange::Kind;
    const std::vector<RegistryChange> changes{{.kind = Kind::createKey, .path = "new"},
                                              {.kind = Kind::setValue, .path = "new", .name = "x"}};
    std::size_t failed = 0;
    EXPECT_EQ(applyRegistryChanges(changes, &failed), corrupt);
    EXPECT_EQ(failed, 1u);
    for (std::uint32_t i = 0; machine.keyName(i, name) == success; ++i) {
        EXPECT_NE(name, "new");
    }
}

TEST_F(RegistryDamage, OfAFileThatWasCutShortIsTold) {
    become(whole.substr(0, 4096 * 3));
    RegistryResult result = success;
    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine, &result);
    Walk walk;
    if (walk.isGood(result)) {
        walk.below(machine, 0);
        walk.isGood(set(machine, "x", 1));
    }
    EXPECT_EQ(walk.unknown, std::vector<RegistryResult>());
    EXPECT_GT(walk.failures, 0);
}

}  // namespace
}  // namespace korva::platform
