#include "platform/named_mutex.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/new_guid.h"
#include "platform/property_key.h"
#include "tests/support/conversation.h"
#include "tests/support/own_registry.h"
#include "tests/support/wait_until.h"

namespace korva::platform {
namespace {

/// One that nobody else has.
std::string newName() {
    return "Global\\" + guidText(newGuid());
}

class NamedMutexTest : public testing::Test {
protected:
    const test::OwnRegistry registry;
    const std::string name = newName();
};

TEST_F(NamedMutexTest, IsHeldFromWhenItIsMadeUntilItGoes) {
    EXPECT_FALSE(isMutexHeld(name));
    {
        const NamedMutex mutex = NamedMutex::create(name);
        ASSERT_TRUE(mutex);
        EXPECT_TRUE(isMutexHeld(name));
        EXPECT_TRUE(isMutexHeld(name));
    }
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, IsNoneUnlessItIsMade) {
    const NamedMutex none;
    EXPECT_FALSE(none);
}

TEST_F(NamedMutexTest, IsMadeAnewAfterItHasGone) {
    for (int i = 0; i < 3; ++i) {
        const NamedMutex mutex = NamedMutex::create(name);
        EXPECT_TRUE(mutex);
        EXPECT_TRUE(isMutexHeld(name));
    }
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, SaysNothingOfAnotherName) {
    const std::string other = newName();
    const NamedMutex mutex = NamedMutex::create(name);
    EXPECT_FALSE(isMutexHeld(other));
    {
        const NamedMutex second = NamedMutex::create(other);
        EXPECT_TRUE(isMutexHeld(other));
    }
    EXPECT_FALSE(isMutexHeld(other));
    EXPECT_TRUE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, TellsNamesApartThatLookAlike) {
    const NamedMutex mutex = NamedMutex::create(name + "a");
    for (const std::string& other : {name, name + "A", name + "aa", name + "a.lock", name + "a_"}) {
        EXPECT_FALSE(isMutexHeld(other)) << other;
    }
}

TEST_F(NamedMutexTest, IsHeldUntilTheLastOfItsNameHasGone) {
    NamedMutex first = NamedMutex::create(name);
    NamedMutex second = NamedMutex::create(name);
    ASSERT_TRUE(first);
    ASSERT_TRUE(second);
    first = {};
    EXPECT_TRUE(isMutexHeld(name));
    second = {};
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, MovesWithItsHolder) {
    NamedMutex first = NamedMutex::create(name);
    NamedMutex second = std::move(first);
    EXPECT_FALSE(first);
    EXPECT_TRUE(second);
    EXPECT_TRUE(isMutexHeld(name));

    first = std::move(second);
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
    EXPECT_TRUE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, LetsGoOfTheOneThatAnotherReplaces) {
    const std::string other = newName();
    NamedMutex mutex = NamedMutex::create(name);
    mutex = NamedMutex::create(other);
    EXPECT_FALSE(isMutexHeld(name));
    EXPECT_TRUE(isMutexHeld(other));
}

TEST_F(NamedMutexTest, IsSeenByAnotherProcess) {
    test::Conversation other(KORVA_SERVICE_COMPANION);
    EXPECT_EQ(other.ask("asks " + name), "no");
    {
        const NamedMutex mutex = NamedMutex::create(name);
        EXPECT_EQ(other.ask("asks " + name), "yes");
    }
    EXPECT_EQ(other.ask("asks " + name), "no");
}

TEST_F(NamedMutexTest, OfAnotherProcessIsSeenUntilThatOneLetsGo) {
    test::Conversation other(KORVA_SERVICE_COMPANION);
    ASSERT_EQ(other.ask("hold " + name), "yes");
    EXPECT_TRUE(isMutexHeld(name));
    ASSERT_EQ(other.ask("hold " + newName()), "yes");
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, IsGoneWhenItsProcessHasEnded) {
    {
        test::Conversation other(KORVA_SERVICE_COMPANION);
        ASSERT_EQ(other.ask("hold " + name), "yes");
    }
    EXPECT_TRUE(test::waitUntil([&] { return !isMutexHeld(name); }));
}

TEST_F(NamedMutexTest, IsGoneWhenItsProcessWasKilled) {
    test::Conversation other(KORVA_SERVICE_COMPANION);
    ASSERT_EQ(other.ask("hold " + name), "yes");
    other.kill();
    EXPECT_TRUE(test::waitUntil([&] { return !isMutexHeld(name); }));
}

TEST_F(NamedMutexTest, StaysWhileOneOfTwoHoldersIsKilled) {
    const NamedMutex mutex = NamedMutex::create(name);
    test::Conversation other(KORVA_SERVICE_COMPANION);
    ASSERT_EQ(other.ask("hold " + name), "yes");
    other.kill();
    removeAbandonedMutex(name);
    EXPECT_TRUE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, OfAKilledProcessIsMadeAnewByAnother) {
    test::Conversation other(KORVA_SERVICE_COMPANION);
    ASSERT_EQ(other.ask("hold " + name), "yes");
    other.kill();
    {
        const NamedMutex mutex = NamedMutex::create(name);
        EXPECT_TRUE(mutex);
        EXPECT_TRUE(isMutexHeld(name));
    }
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, IsLeftAloneByTheRemovalOfAbandonedOnes) {
    NamedMutex mutex = NamedMutex::create(name);
    removeAbandonedMutex(name);
    EXPECT_TRUE(isMutexHeld(name));
    mutex = {};
    removeAbandonedMutex(name);
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, OfAnotherProcessIsLeftAloneAsWell) {
    test::Conversation other(KORVA_SERVICE_COMPANION);
    ASSERT_EQ(other.ask("hold " + name), "yes");
    removeAbandonedMutex(name);
    EXPECT_TRUE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, GoesOnAnyThread) {
    NamedMutex mutex = NamedMutex::create(name);
    std::thread([&] { mutex = {}; }).join();
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, OutlivesTheThreadThatMadeIt) {
    NamedMutex mutex;
    std::thread([&] { mutex = NamedMutex::create(name); }).join();
    EXPECT_TRUE(isMutexHeld(name));
    mutex = {};
    EXPECT_FALSE(isMutexHeld(name));
}

/// Threads that do something again and again meanwhile.
template <class Action>
class Meanwhile {
public:
    explicit Meanwhile(const Action& repeated) {
        for (std::thread& thread : threads) {
            thread = std::thread([this, repeated] {
                while (!isOver) {
                    repeated();
                    ++count;
                }
            });
        }
    }
    ~Meanwhile() {
        isOver = true;
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
    Meanwhile(const Meanwhile&) = delete;
    Meanwhile& operator=(const Meanwhile&) = delete;

    std::atomic<int> count{0};

private:
    std::atomic<bool> isOver{false};
    std::array<std::thread, 2> threads;
};

TEST_F(NamedMutexTest, IsMadeAndSeenWhateverOthersAskMeanwhile) {
    Meanwhile asking([this] { static_cast<void>(isMutexHeld(name)); });
    for (int i = 0; i < 300 || asking.count < 300; ++i) {
        const NamedMutex mutex = NamedMutex::create(name);
        ASSERT_TRUE(mutex);
        ASSERT_TRUE(isMutexHeld(name));
    }
    EXPECT_TRUE(test::waitUntil([&] { return !isMutexHeld(name); }));
}

TEST_F(NamedMutexTest, IsMadeAndSeenWhileOthersRemoveAbandonedOnes) {
    Meanwhile removing([this] { removeAbandonedMutex(name); });
    for (int i = 0; i < 300 || removing.count < 300; ++i) {
        const NamedMutex mutex = NamedMutex::create(name);
        ASSERT_TRUE(mutex);
        ASSERT_TRUE(isMutexHeld(name));
    }
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, IsSeenByEachOfSeveralWhoMakeIt) {
    {
        std::atomic<int> unseen{0};
        Meanwhile making([&] {
            const NamedMutex mutex = NamedMutex::create(name);
            unseen += mutex && isMutexHeld(name) ? 0 : 1;
        });
        EXPECT_TRUE(test::waitUntil([&] { return making.count >= 300; }));
        EXPECT_EQ(unseen, 0);
    }
    EXPECT_FALSE(isMutexHeld(name));
}

TEST_F(NamedMutexTest, TakesNoNameThatIsNone) {
    const std::vector<std::string> hostile = {
        "",
        "Global",
        "Global\\",
        "Local\\a",
        "global\\a",
        "a",
        "..",
        "Global\\a\\b",
        "Global\\..\\a",
        "Global\\a/b",
        "Global\\../../a",
        "Global\\a b",
        "Global\\a\n",
        "Global\\\xC3\xA4",
        std::string("Global\\a\0b", 10),
        "Global\\" + std::string(201, 'a'),
    };
    for (const std::string& none : hostile) {
        EXPECT_FALSE(isMutexName(none)) << none;
        EXPECT_FALSE(NamedMutex::create(none)) << none;
        EXPECT_FALSE(isMutexHeld(none)) << none;
        removeAbandonedMutex(none);
    }
}

TEST_F(NamedMutexTest, TakesTheLongestNameAndOneOfDots) {
    const std::string longest = "Global\\" + guidText(newGuid()) + std::string(200 - 38, 'a');
    ASSERT_EQ(longest.size(), 207U);
    for (const std::string& strange : {longest, std::string("Global\\..")}) {
        {
            const NamedMutex mutex = NamedMutex::create(strange);
            EXPECT_TRUE(mutex) << strange;
            EXPECT_TRUE(isMutexHeld(strange)) << strange;
        }
        EXPECT_FALSE(isMutexHeld(strange)) << strange;
    }
}

}  // namespace
}  // namespace korva::platform
