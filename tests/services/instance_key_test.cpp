#include "services/instance_key.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/guid_literal.h"
#include "platform/property_key.h"
#include "platform/tick_clock.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/shown_values.h"
#include "tests/support/telemetry_base.h"
#include "tests/support/wait_until.h"

namespace korva::services {
namespace {

using namespace platform::registry_result;
using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryRoot;
using test::numberOf;
using test::setNumber;
using test::ShownValues;
using test::shownValuesOf;

constexpr GUID guid = platform::guidOf("{6DCC1AC8-4A3C-4A98-A3A7-F967127D5763}");
constexpr const char* guidName = "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}";

RegistryKey machine() {
    return RegistryKey::root(RegistryRoot::localMachine);
}

RegistryKey made(std::string_view path) {
    RegistryKey key;
    EXPECT_EQ(machine().create(path, RegistryAccess::readWrite, key), success) << path;
    return key;
}

void makeLink(std::string_view path) {
    EXPECT_EQ(made(path).setValue("SymbolicLinkValue", platform::registry_type::string, {}), success);
}

/// By name, without the time of the last write.
ShownValues valuesOf(const RegistryKey& key) {
    ShownValues values = shownValuesOf(key);
    values.erase("WriteTime");
    return values;
}

constexpr std::array<std::byte, 3> threeBytes = {std::byte{1}, std::byte{0}, std::byte{255}};

/// What each kind of write gives.
std::vector<platform::RegistryResult> resultsOfWriting(InstanceKey& key) {
    return {key.writeDword("d", 1), key.writeQword("q", 1), key.writeBlob("b", threeBytes),
            key.writeString("s", "text")};
}
const std::vector<platform::RegistryResult> allSuccess{success, success, success, success};
const std::vector<platform::RegistryResult> allDeleted{keyDeleted, keyDeleted, keyDeleted, keyDeleted};

/// On a machine where instances may show themselves.
class InstanceKeyTest : public testing::Test {
protected:
    [[nodiscard]] RegistryKey keyOfGuid() const { return base->open(guidName); }
    [[nodiscard]] static bool isMutexHeld() {
        return platform::isMutexHeld(std::string("Global\\") + guidName);
    }

    const test::OwnRegistry registry;
    std::optional<test::TelemetryBase> base{std::in_place};
};

TEST_F(InstanceKeyTest, IsAKeyAndAMutexOfOneNameForAsLongAsItLives) {
    {
        const InstanceKey key(guid);
        EXPECT_TRUE(key.isOpen());
        EXPECT_EQ(key.path(), std::string("Software\\Kestrelwright\\APO\\Instances\\") + guidName);
        EXPECT_TRUE(isMutexHeld());
        EXPECT_EQ(base->instances(), std::vector<std::string>{guidName});
    }
    EXPECT_TRUE(base->instances().empty());
    EXPECT_FALSE(isMutexHeld());
}

TEST_F(InstanceKeyTest, HasANameThatNobodyElseHas) {
    const InstanceKey first;
    const InstanceKey second;
    EXPECT_NE(first.path(), second.path());
    EXPECT_EQ(base->instances().size(), 2U);
}

TEST_F(InstanceKeyTest, IsNoneWithoutTheBase) {
    base.reset();
    InstanceKey key(guid);
    EXPECT_FALSE(key.isOpen());
    EXPECT_EQ(key.path(), "");
    EXPECT_FALSE(isMutexHeld());
    EXPECT_EQ(resultsOfWriting(key), allSuccess);
    EXPECT_EQ(key.readDword("d"), std::nullopt);
    RegistryKey opened;
    EXPECT_EQ(machine().open(instance_place::base, RegistryAccess::read, opened), notFound);
}

TEST_F(InstanceKeyTest, StaysNoneWhenTheBaseIsMadeLater) {
    base.reset();
    InstanceKey key(guid);
    base.emplace();
    EXPECT_EQ(resultsOfWriting(key), allSuccess);
    EXPECT_TRUE(base->instances().empty());
}

TEST_F(InstanceKeyTest, IsNoneWhereTheBasePointsElsewhere) {
    makeLink(instance_place::base);
    InstanceKey key(guid);
    EXPECT_FALSE(key.isOpen());
    EXPECT_FALSE(isMutexHeld());
    EXPECT_EQ(resultsOfWriting(key), allSuccess);
    EXPECT_TRUE(base->instances().empty());
}

TEST_F(InstanceKeyTest, IsNoneWhereAKeyInItsPlacePointsElsewhere) {
    makeLink(instance_place::keyPath(guidName));
    RegistryKey opened;
    ASSERT_EQ(machine().open(instance_place::keyPath(guidName), RegistryAccess::read, opened), isLink);
    {
        InstanceKey key(guid);
        EXPECT_FALSE(key.isOpen());
        EXPECT_TRUE(isMutexHeld());
        EXPECT_EQ(resultsOfWriting(key), allSuccess);
        EXPECT_EQ(key.readDword("d"), std::nullopt);
    }
    EXPECT_FALSE(isMutexHeld());
    EXPECT_EQ(base->instances(), std::vector<std::string>{guidName}) << "it is somebody else's";
}

TEST_F(InstanceKeyTest, LooksForALinkInItsPlaceAloneNotOnTheWayThere) {
    makeLink(instance_place::instances);
    const InstanceKey key(guid);
    EXPECT_TRUE(key.isOpen());
}

TEST_F(InstanceKeyTest, MakesTheKeysOnItsWayAnewAndLeavesThem) {
    { const InstanceKey key(guid); }
    ASSERT_EQ(machine().deleteTree("Software\\Kestrelwright\\APO"), success);
    { const InstanceKey key(guid); }
    RegistryKey opened;
    EXPECT_EQ(machine().open(instance_place::instances, RegistryAccess::read, opened), success);
}

TEST_F(InstanceKeyTest, WritesEachKindWithItsTypeAndBytes) {
    InstanceKey key(guid);
    EXPECT_EQ(key.writeDword("dword", 0x12345678), success);
    EXPECT_EQ(key.writeQword("qword", 0x123456789ABCDEF0), success);
    EXPECT_EQ(key.writeBlob("blob", threeBytes), success);
    EXPECT_EQ(key.writeBlob("empty blob", {}), success);
    EXPECT_EQ(key.writeString("type", "MFX"), success);
    EXPECT_EQ(key.writeString("empty", ""), success);
    const ShownValues expected = {{"dword", "4:78563412"}, {"qword", "11:f0debc9a78563412"},
                                  {"blob", "3:0100ff"},    {"empty blob", "3:"},
                                  {"type", "1:4d465800"},  {"empty", "1:00"}};
    EXPECT_EQ(valuesOf(keyOfGuid()), expected);
}

// A system that takes it for UTF-16 looks behind the bytes for a terminator, and may add one.
TEST_F(InstanceKeyTest, AStringIsItsBytesAndAZeroWhateverItsLength) {
    InstanceKey key(guid);
    for (std::size_t length = 0; length < 70; ++length) {
        const std::string text(length, 'x');
        ASSERT_EQ(key.writeString("text", text), success);
        EXPECT_EQ(valuesOf(keyOfGuid()).at("text"), "1:" + test::hexOf(text) + "00") << length;
    }
}

TEST_F(InstanceKeyTest, AStringMayBeAPartOfALongerOne) {
    InstanceKey key(guid);
    ASSERT_EQ(key.writeString("text", std::string_view("longer").substr(0, 3)), success);
    EXPECT_EQ(valuesOf(keyOfGuid()).at("text"), "1:6c6f6e00");
}

TEST_F(InstanceKeyTest, EachWriteIsFollowedByItsTime) {
    InstanceKey key(guid);
    EXPECT_EQ(numberOf(keyOfGuid(), "WriteTime"), std::nullopt);
    const std::uint32_t begin = platform::tickClockMs();
    std::uint32_t last = begin;
    const std::vector<std::function<platform::RegistryResult()>> writes = {
        [&] { return key.writeDword("d", 1); }, [&] { return key.writeQword("q", 1); },
        [&] { return key.writeBlob("b", threeBytes); }, [&] { return key.writeString("s", "text"); }};
    for (const auto& write : writes) {
        const std::uint32_t before = platform::tickClockMs();
        EXPECT_EQ(write(), success);
        const std::optional<std::uint32_t> time = numberOf(keyOfGuid(), "WriteTime");
        ASSERT_TRUE(time);
        EXPECT_GE(*time - begin, before - begin);
        EXPECT_LE(*time - begin, platform::tickClockMs() - begin);
        EXPECT_TRUE(test::waitUntil([&] { return platform::tickClockMs() != last; }));
        last = platform::tickClockMs();
    }
    EXPECT_EQ(shownValuesOf(keyOfGuid()).at("WriteTime").substr(0, 2), "4:");
}

TEST_F(InstanceKeyTest, AWriteThatIsRefusedTellsWhyAndHasNoTime) {
    InstanceKey key(guid);
    EXPECT_EQ(key.writeDword("\xFF", 1), invalidParameter);
    EXPECT_EQ(key.writeQword("\xFF", 1), invalidParameter);
    EXPECT_EQ(key.writeBlob("\xFF", threeBytes), invalidParameter);
    EXPECT_EQ(key.writeString("\xFF", "text"), invalidParameter);
    EXPECT_TRUE(shownValuesOf(keyOfGuid()).empty());
}

TEST_F(InstanceKeyTest, AWriteToADeletedKeyTellsThatItIsDeleted) {
    InstanceKey key(guid);
    ASSERT_TRUE(setNumber(keyOfGuid(), "request", 1));
    ASSERT_EQ(machine().deleteTree(key.path()), success);
    EXPECT_EQ(resultsOfWriting(key), allDeleted);
    EXPECT_EQ(key.readDword("request"), std::nullopt);
    EXPECT_TRUE(isMutexHeld());
}

TEST_F(InstanceKeyTest, NothingIsWrittenToAnotherKeyOfTheSameName) {
    InstanceKey key(guid);
    ASSERT_EQ(machine().deleteTree(key.path()), success);
    const RegistryKey other = made(key.path());
    EXPECT_EQ(resultsOfWriting(key), allDeleted);
    EXPECT_TRUE(shownValuesOf(other).empty());
}

TEST_F(InstanceKeyTest, ReadsNothingButNumbers) {
    const InstanceKey key(guid);
    const RegistryKey tool = keyOfGuid();
    const std::vector<std::byte> eight(8, std::byte{7});
    const std::span<const std::byte> bytes(eight);
    ASSERT_TRUE(setNumber(tool, "number", 0xFFFFFFFF));
    ASSERT_TRUE(setNumber(tool, "zero", 0));
    ASSERT_EQ(tool.setValue("qword", platform::registry_type::qword, bytes), success);
    ASSERT_EQ(tool.setValue("binary", platform::registry_type::binary, bytes.first(4)), success);
    ASSERT_EQ(tool.setValue("short", platform::registry_type::dword, bytes.first(3)), success);
    ASSERT_EQ(tool.setValue("long", platform::registry_type::dword, bytes.first(5)), success);
    ASSERT_EQ(tool.setValue("empty", platform::registry_type::dword, {}), success);
    EXPECT_EQ(key.readDword("number"), 0xFFFFFFFF);
    EXPECT_EQ(key.readDword("NUMBER"), 0xFFFFFFFF);
    EXPECT_EQ(key.readDword("zero"), 0U);
    for (const char* const name : {"missing", "qword", "binary", "short", "long", "empty", "", "\xFF"}) {
        EXPECT_EQ(key.readDword(name), std::nullopt) << name;
    }
}

TEST_F(InstanceKeyTest, ItsEndTakesWhatOthersPutBelowIt) {
    {
        const InstanceKey key(guid);
        EXPECT_TRUE(setNumber(made(key.path() + "\\Tool\\Deep"), "v", 1));
        makeLink(key.path() + "\\Link");
    }
    EXPECT_TRUE(base->instances().empty());
}

TEST_F(InstanceKeyTest, ItsRemovalLeavesItsMutexAndNoPath) {
    InstanceKey key(guid);
    key.remove();
    EXPECT_TRUE(base->instances().empty());
    EXPECT_TRUE(isMutexHeld());
    EXPECT_FALSE(key.isOpen());
    EXPECT_EQ(key.path(), "");
    EXPECT_EQ(resultsOfWriting(key), allSuccess);
    key.remove();
    EXPECT_TRUE(base->instances().empty());
}

TEST_F(InstanceKeyTest, ItsEndLeavesOthers) {
    std::optional<InstanceKey> first(std::in_place);
    const InstanceKey second(guid);
    first.reset();
    EXPECT_EQ(base->instances(), std::vector<std::string>{guidName});
    EXPECT_TRUE(isMutexHeld());
}

// So it is where the system has no new GUIDs to give.
TEST_F(InstanceKeyTest, TwoOfOneNameShareWhatTheyWriteAndTheFirstToEndTakesIt) {
    std::optional<InstanceKey> first(std::in_place, GUID{});
    InstanceKey second(GUID{});
    EXPECT_EQ(first->writeDword("first", 1), success);
    EXPECT_EQ(second.writeDword("second", 2), success);
    const std::string name = platform::guidText(GUID{});
    EXPECT_EQ(valuesOf(base->open(name)).size(), 2U);
    first.reset();
    EXPECT_TRUE(base->instances().empty());
    EXPECT_TRUE(platform::isMutexHeld("Global\\" + name));
    EXPECT_EQ(second.writeDword("second", 3), keyDeleted);
}

TEST_F(InstanceKeyTest, ThreadsHaveTheirsBesideEachOther) {
    constexpr std::uint32_t rounds = 10;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (std::uint32_t thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (std::uint32_t round = 0; round < rounds; ++round) {
                InstanceKey key;
                const std::uint32_t mark = thread * rounds + round;
                const bool isRight = key.writeDword("mark", mark) == success && key.readDword("mark") == mark;
                wrong += isRight ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_TRUE(base->instances().empty());
}

}  // namespace
}  // namespace korva::services
