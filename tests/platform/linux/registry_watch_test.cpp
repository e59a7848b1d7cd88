// The thread behind watches of the registry.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <signal.h>

#include <array>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <span>
#include <string>
#include <thread>

#include "platform/registry.h"
#include "platform/wait_handles.h"
#include "tests/support/own_registry.h"
#include "tests/support/processor_time.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"

namespace korva::platform {
namespace {

using namespace registry_result;

class RegistryListener : public testing::Test {
protected:
    RegistryListener() {
        EXPECT_EQ(RegistryKey::root(RegistryRoot::localMachine)
                      .create(registry.key() + "\\a\\b", RegistryAccess::readWrite, key),
                  success);
    }

    static RegistryResult write(const RegistryKey& to, int number) {
        return to.setValue("x", registry_type::dword, std::as_bytes(std::span(&number, 1)));
    }

    static bool isToldWithin(const RegistryWatch& watch, std::int64_t limitMs) {
        const std::array handles{watch.handle()};
        return waitForHandles(handles, limitMs) == 0;
    }

    test::OwnRegistry registry;
    RegistryKey key;
};

std::set<std::string> threadsOfProcess() {
    std::set<std::string> all;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        all.insert(task.path().string());
    }
    return all;
}

/// The one thread that this process has beside `before`.
std::string threadBeside(const std::set<std::string>& before) {
    std::set<std::string> added = threadsOfProcess();
    std::erase_if(added, [&](const std::string& one) { return before.contains(one); });
    EXPECT_EQ(added.size(), 1u);
    return added.empty() ? "" : *added.begin();
}

/// What the system says of a thread under a label; "0" if it says nothing.
std::string statusOf(const std::string& thread, const std::string& label) {
    std::ifstream status(thread + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(label)) {
            return line.substr(label.size());
        }
    }
    ADD_FAILURE() << "no thread " << thread;
    return "0";
}

/// How often a thread went to sleep by itself.
std::int64_t sleepsOf(const std::string& thread) {
    return std::stoll(statusOf(thread, "voluntary_ctxt_switches:"));
}

TEST_F(RegistryListener, EndsWithTheLastWatch) {
    const std::size_t before = test::threadCountAtRest();
    {
        RegistryWatch first;
        ASSERT_EQ(first.arm(key), success);
        RegistryWatch second;
        ASSERT_EQ(second.arm(key), success);
        EXPECT_EQ(test::threadCount(), before + 1);
    }
    EXPECT_TRUE(test::waitUntil([&] { return test::threadCount() == before; }));
}

TEST_F(RegistryListener, BeginsAnewAfterItsEnd) {
    for (int i = 0; i < 20; ++i) {
        RegistryWatch watch;
        ASSERT_EQ(watch.arm(key), success);
        ASSERT_EQ(write(key, i), success);
        EXPECT_TRUE(isToldWithin(watch, 20'000));
    }
}

TEST_F(RegistryListener, TellsOfAChangeThatWasNotRung) {
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);

    // As one who is killed between the two leaves it: the change is there, the bell was not rung.
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(registryPlace().c_str(), &other), SQLITE_OK);
    sqlite3_busy_timeout(other, 5000);
    ASSERT_EQ(sqlite3_exec(other, "UPDATE keys SET sequence = sequence + 1", nullptr, nullptr, nullptr),
              SQLITE_OK);

    EXPECT_TRUE(isToldWithin(watch, 20'000));
    sqlite3_close(other);
}

TEST_F(RegistryListener, TellsOfChangesFarSoonerThanByItsSlowLook) {
    constexpr int changes = 200;
    RegistryWatch watch;
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < changes; ++i) {
        ASSERT_EQ(watch.arm(key), success);
        ASSERT_EQ(write(key, i), success);
        ASSERT_TRUE(isToldWithin(watch, 20'000));
        ASSERT_TRUE(watch.take());
    }
    // Four looks a second would take 50 s.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
}

TEST_F(RegistryListener, TellsOfTheDeletionOfTheKeyItself) {
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);
    ASSERT_EQ(RegistryKey::root(RegistryRoot::localMachine).deleteKey(registry.key() + "\\a\\b"), success);
    EXPECT_TRUE(isToldWithin(watch, 20'000));
    EXPECT_TRUE(watch.take());
    EXPECT_EQ(watch.arm(key), keyDeleted);
}

TEST_F(RegistryListener, TellsOfAChangeThatComesBetweenTwoArmings) {
    RegistryWatch watch;
    for (int i = 0; i < 500; ++i) {
        ASSERT_EQ(watch.arm(key), success);
        ASSERT_EQ(write(key, i), success);
        ASSERT_EQ(watch.arm(key), success);
        ASSERT_TRUE(isToldWithin(watch, 20'000));
        ASSERT_TRUE(watch.take());
    }
}

TEST_F(RegistryListener, HearsWritesToEachRegistryThatIsArmed) {
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);
    const test::OwnRegistry second;
    RegistryKey other;
    ASSERT_EQ(
        RegistryKey::root(RegistryRoot::localMachine).open(second.key(), RegistryAccess::readWrite, other),
        success);
    ASSERT_EQ(watch.arm(other), success);

    ASSERT_EQ(write(other, 1), success);
    EXPECT_TRUE(isToldWithin(watch, 20'000));
    EXPECT_TRUE(watch.take());
    ASSERT_EQ(write(key, 1), success);
    EXPECT_TRUE(isToldWithin(watch, 20'000));
}

TEST_F(RegistryListener, WakesFourTimesASecondAtMostWhenNothingChanges) {
    static_cast<void>(test::threadCountAtRest());
    const auto others = threadsOfProcess();
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);
    const std::string listener = threadBeside(others);
    const std::int64_t sleepsBefore = sleepsOf(listener);
    const std::int64_t timeBefore = test::processorTimeMs();

    EXPECT_FALSE(isToldWithin(watch, 3000));

    // It may not have gone to sleep before.
    EXPECT_LE(sleepsOf(listener) - sleepsBefore, 3 * 4 + 1);
    EXPECT_LE(test::processorTimeMs() - timeBefore, 30);
}

TEST_F(RegistryListener, SleepsWhenNothingIsArmed) {
    static_cast<void>(test::threadCountAtRest());
    const auto others = threadsOfProcess();
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);
    const std::string listener = threadBeside(others);
    ASSERT_EQ(write(key, 1), success);
    ASSERT_TRUE(isToldWithin(watch, 20'000));
    ASSERT_TRUE(watch.take());
    const std::int64_t sleepsBefore = sleepsOf(listener);

    EXPECT_FALSE(isToldWithin(watch, 2000));

    // It may have been awake still, or waiting for its lock. Looks would be eight.
    EXPECT_LE(sleepsOf(listener) - sleepsBefore, 2);
}

TEST_F(RegistryListener, LeavesTheSignalsOfTheProcessToOtherThreads) {
    static_cast<void>(test::threadCountAtRest());
    const auto others = threadsOfProcess();
    RegistryWatch watch;
    ASSERT_EQ(watch.arm(key), success);

    const std::uint64_t blocked = std::stoull(statusOf(threadBeside(others), "SigBlk:"), nullptr, 16);

    for (const int signal : {SIGINT, SIGTERM, SIGALRM}) {
        EXPECT_NE(blocked >> (signal - 1) & 1, 0u) << signal;
    }
}

TEST_F(RegistryListener, LosesNoChangeToArmingAndReading) {
    constexpr int last = 3000;
    std::thread writer([this] {
        for (int i = 1; i <= last; ++i) {
            ASSERT_EQ(write(key, i), success);
        }
    });
    RegistryWatch watch;
    int seen = 0;
    while (seen < last) {
        ASSERT_EQ(watch.arm(key), success);
        RegistryValue value;
        if (key.readValue("x", value) == success) {
            std::memcpy(&seen, value.data.data(), sizeof seen);
        }
        if (seen < last && !isToldWithin(watch, 20'000)) {
            break;
        }
        watch.take();
    }
    EXPECT_EQ(seen, last);
    writer.join();
}

}  // namespace
}  // namespace korva::platform
