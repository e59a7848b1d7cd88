#include "platform/registry.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;

TEST_F(RegistryTest, HasItsThreeRoots) {
    for (const RegistryRoot root :
         {RegistryRoot::classesRoot, RegistryRoot::currentUser, RegistryRoot::localMachine}) {
        RegistryResult result = -1;
        const RegistryKey opened = RegistryKey::root(root, &result);
        EXPECT_TRUE(opened);
        EXPECT_EQ(result, success);
        EXPECT_NE(opened.handle(), 0u);
    }
}

TEST_F(RegistryTest, ShowsTheClassesAsTheLocalMachinesSoftwareClasses) {
    // A name of this test's own: the root is everybody's.
    const std::string name = "KorvaTest" + own.key().substr(own.key().rfind('\\') + 1);
    RegistryKey written;
    ASSERT_EQ(machine.create("Software\\Classes\\" + name, RegistryAccess::readWrite, written), success);
    setNumber(written, "Number", 7);

    const RegistryKey classes = RegistryKey::root(RegistryRoot::classesRoot);
    RegistryKey read;
    EXPECT_EQ(classes.open(name, RegistryAccess::read, read), success);
    EXPECT_EQ(dataOf(read, "Number"), bytes({7, 0, 0, 0}));

    EXPECT_EQ(classes.deleteTree(name), success);
    EXPECT_EQ(machine.open("Software\\Classes\\" + name, RegistryAccess::read, read), notFound);
}

TEST_F(RegistryTest, KeepsTheRootsApart) {
    const RegistryKey user = RegistryKey::root(RegistryRoot::currentUser);
    RegistryKey opened;
    EXPECT_EQ(user.open(own.key(), RegistryAccess::read, opened), notFound);
    EXPECT_FALSE(opened);
}

TEST_F(RegistryTest, KeepsARootAfterAllSharesOfItWent) {
    for (int i = 0; i < 3; ++i) {
        RegistryKey opened;
        EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine).open(own.key(), RegistryAccess::read, opened),
                  success);
    }
}

TEST_F(RegistryTest, SaysWhereItIs) {
    EXPECT_FALSE(registryPlace().empty());
}

TEST_F(RegistryTest, ServesSeveralThreadsOnOneKey) {
    constexpr std::uint32_t rounds = 200;
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([this, name = "value" + std::to_string(i)] {
            for (std::uint32_t round = 0; round < rounds; ++round) {
                setNumber(key, name, round);
                const auto low = static_cast<int>(round & 0xFF);
                EXPECT_EQ(dataOf(key, name), bytes({low, static_cast<int>(round >> 8), 0, 0}));
                RegistryKey opened;
                EXPECT_EQ(key.create(name, RegistryAccess::read, opened), success);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(valueNames(key).size(), threads.size());
    EXPECT_EQ(keyNames(key).size(), threads.size());
}

TEST(RegistryKey, IsNoKeyAtFirstAndRefusesEverything) {
    const RegistryKey none;
    EXPECT_FALSE(none);
    EXPECT_EQ(none.handle(), 0u);
    EXPECT_EQ(none, RegistryKey());

    RegistryKey opened;
    RegistryValue value;
    std::string name;
    EXPECT_EQ(none.open("a", RegistryAccess::read, opened), invalidHandle);
    EXPECT_EQ(none.open("", RegistryAccess::read, opened), invalidHandle);
    EXPECT_EQ(none.create("a", RegistryAccess::read, opened), invalidHandle);
    EXPECT_EQ(none.deleteKey("a"), invalidHandle);
    EXPECT_EQ(none.deleteTree("a"), invalidHandle);
    EXPECT_EQ(none.readValue("a", value), invalidHandle);
    EXPECT_EQ(none.setValue("a", registry_type::binary, {}), invalidHandle);
    EXPECT_EQ(none.deleteValue("a"), invalidHandle);
    EXPECT_EQ(none.valueName(0, 100, name), invalidHandle);
    EXPECT_EQ(none.keyName(0, name), invalidHandle);
    EXPECT_EQ(none.flush(), invalidHandle);
    EXPECT_FALSE(opened);
}

TEST_F(RegistryTest, ComparesKeysByWhatTheyAreSharesOf) {
    const RegistryKey share = key;
    EXPECT_EQ(share, key);
    EXPECT_EQ(share.handle(), key.handle());

    RegistryKey again;
    ASSERT_EQ(machine.open(own.key(), RegistryAccess::readWrite, again), success);
    EXPECT_NE(again, key);
    EXPECT_NE(key, RegistryKey());
}

TEST_F(RegistryTest, KeepsAKeyOpenAsLongAsAnyShare) {
    RegistryKey share;
    {
        const RegistryKey first = made("sub");
        share = first;
    }
    setNumber(share, "n", 1);
    EXPECT_EQ(dataOf(share, "n"), bytes({1, 0, 0, 0}));
}

/// Every operation of a key.
std::vector<RegistryResult> allOperations(const RegistryKey& key) {
    RegistryKey opened;
    RegistryValue value;
    std::string name;
    RegistryWatch watch;
    return {key.open("", RegistryAccess::read, opened),
            key.open("below", RegistryAccess::read, opened),
            key.create("", RegistryAccess::read, opened),
            key.create("below", RegistryAccess::read, opened),
            key.deleteKey("below"),
            key.deleteTree("below"),
            key.readValue("v", value),
            key.setValue("v", registry_type::binary, {}),
            key.deleteValue("v"),
            key.valueName(0, 100, name),
            key.valueName(1000, 100, name),
            key.keyName(0, name),
            key.flush(),
            watch.arm(key)};
}

TEST_F(RegistryTest, RefusesEverythingOnADeletedKey) {
    const RegistryKey stale = made("sub");
    setNumber(stale, "v", 1);
    ASSERT_EQ(key.deleteKey("sub"), success);

    const std::vector<RegistryResult> refused(allOperations(stale).size(), keyDeleted);
    EXPECT_EQ(allOperations(stale), refused);
    EXPECT_TRUE(stale);
}

TEST_F(RegistryTest, RefusesADeletedKeyAlsoWhenItsNameIsMadeAgain) {
    const RegistryKey stale = made("a\\b");
    ASSERT_EQ(key.deleteTree("a"), success);
    const RegistryKey second = made("a\\b");
    setNumber(second, "v", 2);

    const std::vector<RegistryResult> refused(allOperations(stale).size(), keyDeleted);
    EXPECT_EQ(allOperations(stale), refused);
    EXPECT_EQ(dataOf(second, "v"), bytes({2, 0, 0, 0}));
    EXPECT_NE(stale, second);
}

TEST_F(RegistryTest, LetsAReadingKeyChangeNothing) {
    setNumber(made("sub"), "v", 1);
    setNumber(key, "v", 1);
    RegistryKey reading;
    ASSERT_EQ(key.open("", RegistryAccess::read, reading), success);

    RegistryKey opened;
    EXPECT_EQ(reading.setValue("v", registry_type::binary, {}), accessDenied);
    EXPECT_EQ(reading.deleteValue("v"), accessDenied);
    EXPECT_EQ(reading.create("new", RegistryAccess::read, opened), accessDenied);
    EXPECT_EQ(reading.create("sub\\new", RegistryAccess::read, opened), accessDenied);
    EXPECT_EQ(reading.deleteKey("sub"), accessDenied);
    EXPECT_EQ(reading.deleteTree("sub"), accessDenied);
    EXPECT_FALSE(opened);

    EXPECT_EQ(keyNames(key), std::vector<std::string>{"sub"});
    EXPECT_EQ(dataOf(key, "v"), bytes({1, 0, 0, 0}));
}

TEST_F(RegistryTest, LetsAWritingKeyTellNothing) {
    setNumber(made("sub"), "v", 1);
    setNumber(key, "v", 1);
    RegistryKey writing;
    ASSERT_EQ(key.open("", RegistryAccess::write, writing), success);

    RegistryValue value;
    std::string name;
    RegistryWatch watch;
    EXPECT_EQ(writing.readValue("v", value), accessDenied);
    EXPECT_EQ(writing.valueName(0, 100, name), accessDenied);
    EXPECT_EQ(writing.keyName(0, name), accessDenied);
    EXPECT_EQ(watch.arm(writing), accessDenied);
    EXPECT_TRUE(value.data.empty());
    EXPECT_TRUE(name.empty());
}

TEST_F(RegistryTest, LetsAWritingKeyChangeValuesAndSubKeys) {
    made("old\\below");
    made("single");
    setNumber(key, "gone", 1);
    RegistryKey writing;
    ASSERT_EQ(machine.create(own.key(), RegistryAccess::write, writing), success);

    RegistryKey opened;
    EXPECT_EQ(writing.setValue("v", registry_type::binary, bytes({7})), success);
    EXPECT_EQ(writing.deleteValue("gone"), success);
    EXPECT_EQ(writing.create("new", RegistryAccess::write, opened), success);
    EXPECT_EQ(writing.deleteTree("old"), success);
    EXPECT_EQ(writing.deleteKey("single"), success);

    EXPECT_EQ(dataOf(key, "v"), bytes({7}));
    EXPECT_EQ(valueNames(key), std::vector<std::string>{"v"});
    EXPECT_EQ(keyNames(key), std::vector<std::string>{"new"});
}

TEST_F(RegistryTest, RefusesAWritingKeyThatPointsElsewhere) {
    makeLink(made("link"));

    RegistryKey opened;
    EXPECT_EQ(key.open("link", RegistryAccess::write, opened), isLink);
    EXPECT_EQ(key.create("link", RegistryAccess::write, opened), isLink);
    EXPECT_FALSE(opened);
}

TEST_F(RegistryTest, LetsAReadingKeyReadAndOpenWhatIsBelow) {
    setNumber(made("sub"), "v", 1);
    RegistryKey reading;
    ASSERT_EQ(key.open("", RegistryAccess::read, reading), success);

    RegistryKey opened;
    bool created = true;
    EXPECT_EQ(reading.create("sub", RegistryAccess::read, opened, &created), success);
    EXPECT_FALSE(created);
    EXPECT_EQ(reading.open("sub", RegistryAccess::readWrite, opened), success);
    setNumber(opened, "v", 2);
    EXPECT_EQ(dataOf(opened, "v"), bytes({2, 0, 0, 0}));
    EXPECT_EQ(keyNames(reading), std::vector<std::string>{"sub"});
    EXPECT_EQ(reading.flush(), success);
}

TEST_F(RegistryTest, FlushesWhatWasWritten) {
    setNumber(key, "v", 3);
    EXPECT_EQ(key.flush(), success);
    EXPECT_EQ(dataOf(key, "v"), bytes({3, 0, 0, 0}));
}

}  // namespace
}  // namespace korva::platform
