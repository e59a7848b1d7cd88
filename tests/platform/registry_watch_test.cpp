#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>

#include "platform/registry.h"
#include "tests/platform/registry_test.h"

namespace korva::platform {
namespace {

using namespace registry_result;

/// Longer than any healthy run takes to tell.
constexpr std::int64_t limitMs = 20'000;

bool isSignalledInTime(const RegistryWatch& watch) {
    const std::array handles{watch.handle()};
    return waitForHandles(handles, limitMs) == 0;
}

class RegistryWatchTest : public RegistryTest {
protected:
    void SetUp() override {
        RegistryTest::SetUp();
        watched = made("watched");
        fence = made("fence");
    }

    void arm() { ASSERT_EQ(watch.arm(watched), success); }

    /// Whether `quiet` stays unsignalled by all that happened before. Word of a change comes in the order of
    /// the changes, but those that are seen together in any order: so a second one must have come after it.
    [[nodiscard]] bool isLeftAlone(RegistryWatch& quiet) {
        for (int i = 0; i < 2; ++i) {
            RegistryWatch other;
            EXPECT_EQ(other.arm(fence), success);
            setNumber(fence, "fence", ++fences);
            EXPECT_TRUE(isSignalledInTime(other));
        }
        return !quiet.take();
    }

    RegistryKey watched;
    RegistryWatch watch;

private:
    RegistryKey fence;
    std::uint32_t fences = 0;
};

TEST_F(RegistryWatchTest, IsNotSignalledBeforeItIsArmed) {
    setNumber(watched, "v", 1);
    EXPECT_TRUE(isLeftAlone(watch));
}

TEST_F(RegistryWatchTest, IsNotToldOfWhatWasBeforeItIsFirstArmed) {
    setNumber(watched, "v", 1);
    arm();
    EXPECT_TRUE(isLeftAlone(watch));
}

TEST_F(RegistryWatchTest, IsSignalledByAValueThatIsSet) {
    arm();
    setNumber(watched, "v", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
    EXPECT_TRUE(watch.take());
}

TEST_F(RegistryWatchTest, IsSignalledByAValueThatIsDeleted) {
    setNumber(watched, "v", 1);
    arm();
    ASSERT_EQ(watched.deleteValue("v"), success);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, IsSignalledByAChangeOfTheDefaultValue) {
    arm();
    setNumber(watched, "", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, IsSignalledByAChangeOfDataOrTypeAlone) {
    setNumber(watched, "v", 1);
    arm();
    setNumber(watched, "v", 2);
    EXPECT_TRUE(isSignalledInTime(watch));
    EXPECT_TRUE(watch.take());

    arm();
    ASSERT_EQ(watched.setValue("v", registry_type::binary, bytes({2, 0, 0, 0})), success);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, IsSignalledByChangesBelowTheKey) {
    for (const char* path : {"watched\\a", "watched\\a\\b", "watched\\c\\d\\e\\f"}) {
        const RegistryKey below = made(path);
        RegistryWatch fresh;
        ASSERT_EQ(fresh.arm(watched), success);
        setNumber(below, "v", 1);
        EXPECT_TRUE(isSignalledInTime(fresh)) << path;
    }
}

TEST_F(RegistryWatchTest, IsSignalledByChangesInKeysThatAreMadeAfterItWasArmed) {
    arm();
    setNumber(made("watched\\a\\b"), "v", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, IsLeftAloneByChangesElsewhere) {
    const RegistryKey sibling = made("watched2");
    const RegistryKey nephew = made("sibling\\watched");
    arm();
    setNumber(key, "v", 1);
    setNumber(sibling, "v", 1);
    setNumber(nephew, "v", 1);
    EXPECT_TRUE(isLeftAlone(watch));

    setNumber(watched, "v", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, IsLeftAloneByReaders) {
    setNumber(watched, "v", 1);
    arm();
    dataOf(watched, "v");
    valueNames(watched);
    EXPECT_EQ(watched.flush(), success);
    EXPECT_EQ(watched.deleteValue("missing"), notFound);
    EXPECT_TRUE(isLeftAlone(watch));
}

TEST_F(RegistryWatchTest, StaysSignalledUntilItIsTaken) {
    arm();
    setNumber(watched, "v", 1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(isSignalledInTime(watch));
    }
    EXPECT_TRUE(watch.take());
    EXPECT_FALSE(watch.take());
    const std::array handles{watch.handle()};
    EXPECT_EQ(waitForHandles(handles, 0), -1);
}

TEST_F(RegistryWatchTest, IsNotSignalledAgainBeforeItIsArmedAgain) {
    arm();
    setNumber(watched, "v", 1);
    ASSERT_TRUE(isSignalledInTime(watch));
    ASSERT_TRUE(watch.take());

    setNumber(watched, "v", 2);
    setNumber(watched, "w", 2);
    EXPECT_TRUE(isLeftAlone(watch));
}

TEST_F(RegistryWatchTest, IsSignalledOnceForEachTimeThatItIsArmed) {
    for (std::uint32_t i = 0; i < 20; ++i) {
        arm();
        setNumber(watched, "v", i);
        ASSERT_TRUE(isSignalledInTime(watch)) << i;
        EXPECT_TRUE(watch.take());
    }
}

TEST_F(RegistryWatchTest, IsSignalledThroughAKeyThatMayOnlyRead) {
    RegistryKey reading;
    ASSERT_EQ(key.open("watched", RegistryAccess::read, reading), success);
    ASSERT_EQ(watch.arm(reading), success);
    setNumber(watched, "v", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, IsSignalledByAnyOfSeveralArmedKeys) {
    const std::array<RegistryKey, 3> keys = {made("one"), made("two"), made("three")};
    for (const RegistryKey& changed : keys) {
        RegistryWatch fresh;
        for (const RegistryKey& armed : keys) {
            ASSERT_EQ(fresh.arm(armed), success);
        }
        setNumber(changed, "v", 1);
        EXPECT_TRUE(isSignalledInTime(fresh));
    }
}

TEST_F(RegistryWatchTest, HearsOfTheOtherKeyWithoutBeingArmedAgain) {
    const RegistryKey other = made("other");
    arm();
    ASSERT_EQ(watch.arm(other), success);
    setNumber(watched, "v", 1);
    ASSERT_TRUE(isSignalledInTime(watch));
    ASSERT_TRUE(watch.take());

    setNumber(other, "v", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, TakesTwoOpensOfOneKeyForTwoKeys) {
    // The change is heard through both, so whoever alternates between them hears the next one too.
    RegistryKey again;
    ASSERT_EQ(key.open("watched", RegistryAccess::read, again), success);
    arm();
    ASSERT_EQ(watch.arm(again), success);
    setNumber(watched, "v", 1);
    ASSERT_TRUE(isSignalledInTime(watch));
    static_cast<void>(isLeftAlone(watch));

    ASSERT_EQ(watch.arm(again), success);
    setNumber(watched, "v", 2);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, TellsEveryWatchOfTheKey) {
    std::array<RegistryWatch, 5> watches;
    for (RegistryWatch& one : watches) {
        ASSERT_EQ(one.arm(watched), success);
    }
    setNumber(watched, "v", 1);
    for (RegistryWatch& one : watches) {
        EXPECT_TRUE(isSignalledInTime(one));
        EXPECT_TRUE(one.take());
    }
}

TEST_F(RegistryWatchTest, MayGoWhileItIsArmed) {
    for (int i = 0; i < 50; ++i) {
        RegistryWatch shortLived;
        ASSERT_EQ(shortLived.arm(watched), success);
    }
    arm();
    setNumber(watched, "v", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, OutlivesTheShareThatItWasArmedWith) {
    {
        RegistryKey shortLived;
        ASSERT_EQ(key.open("watched", RegistryAccess::read, shortLived), success);
        ASSERT_EQ(watch.arm(shortLived), success);
    }
    // It may have been signalled by the end of the share; it can be used as before.
    static_cast<void>(watch.take());
    arm();
    setNumber(watched, "v", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, StaysArmedAfterTheThreadThatArmedIt) {
    std::thread([this] { arm(); }).join();
    EXPECT_TRUE(isLeftAlone(watch));
    setNumber(watched, "v", 1);
    EXPECT_TRUE(isSignalledInTime(watch));
}

TEST_F(RegistryWatchTest, IsWaitedForByAnotherThread) {
    arm();
    bool isTold = false;
    std::thread waiting([&] { isTold = isSignalledInTime(watch); });
    setNumber(watched, "v", 1);
    waiting.join();
    EXPECT_TRUE(isTold);
}

TEST_F(RegistryWatchTest, CannotBeArmedWithoutAKey) {
    EXPECT_EQ(watch.arm(RegistryKey()), invalidHandle);
    EXPECT_FALSE(watch.take());
}

TEST_F(RegistryWatchTest, CannotBeArmedWithADeletedKey) {
    // That the deletion itself may pass unnoticed is why arming has to tell.
    arm();
    ASSERT_EQ(key.deleteTree("watched"), success);
    EXPECT_EQ(watch.arm(watched), keyDeleted);
    const RegistryKey again = made("watched");
    EXPECT_EQ(watch.arm(watched), keyDeleted);

    RegistryWatch fresh;
    EXPECT_EQ(fresh.arm(again), success);
    setNumber(again, "v", 1);
    EXPECT_TRUE(isSignalledInTime(fresh));
}

TEST_F(RegistryWatchTest, IsSignalledByChangesThatAreMadeTogether) {
    arm();
    const std::array changes = {RegistryChange{.kind = RegistryChange::Kind::setValue,
                                               .path = own.key() + "\\watched\\new",
                                               .name = "v",
                                               .value = {.type = registry_type::binary, .data = bytes({1})}}};
    ASSERT_EQ(applyRegistryChanges(changes), success);
    EXPECT_TRUE(isSignalledInTime(watch));
}

std::uint32_t numberOf(const RegistryKey& key, std::string_view name) {
    std::uint32_t number = 0;
    const Bytes data = dataOf(key, name);
    EXPECT_EQ(data.size(), sizeof(number));
    std::memcpy(&number, data.data(), std::min(sizeof(number), data.size()));
    return number;
}

TEST_F(RegistryWatchTest, LosesNoChangeToAReaderThatArmsFirst) {
    constexpr std::uint32_t writes = 3000;
    setNumber(watched, "v", 0);
    // A key for each side: the two share nothing but the registry.
    const RegistryKey written = made("watched");
    std::thread writer([&written] {
        for (std::uint32_t i = 1; i <= writes; ++i) {
            setNumber(written, "v", i);
        }
    });
    std::uint32_t seen = 0;
    while (seen < writes) {
        ASSERT_EQ(watch.arm(watched), success);
        const std::uint32_t now = numberOf(watched, "v");
        EXPECT_GE(now, seen);
        seen = now;
        // A change that was lost would leave this waiting when the writer is done.
        if (seen < writes && !isSignalledInTime(watch)) {
            ADD_FAILURE() << "nothing was heard after " << seen;
            break;
        }
        watch.take();
    }
    writer.join();
    EXPECT_EQ(seen, writes);
}

}  // namespace
}  // namespace korva::platform
