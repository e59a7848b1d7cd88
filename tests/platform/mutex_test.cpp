#include "platform/mutex.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace korva::platform {
namespace {

// A static that is there before any constructor has run, and needs no destructor.
constinit Mutex staticMutex;

TEST(Mutex, LetsOneThreadInAtATime) {
    constexpr int rounds = 20'000;
    int counted = 0;
    const auto count = [&] {
        for (int i = 0; i < rounds; ++i) {
            const std::lock_guard guard(staticMutex);
            ++counted;
        }
    };
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads) {
        thread = std::thread(count);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counted, 4 * rounds);
}

TEST(Mutex, IsNotTakenTwice) {
    Mutex mutex;
    const std::lock_guard guard(mutex);
    bool taken = true;
    std::thread([&] { taken = mutex.try_lock(); }).join();
    EXPECT_FALSE(taken);
}

TEST(RecursiveMutex, LetsOneThreadInAtATimeHoweverOftenItTakesIt) {
    constexpr int rounds = 5'000;
    RecursiveMutex mutex;
    int counted = 0;
    const auto count = [&] {
        for (int i = 0; i < rounds; ++i) {
            const std::lock_guard outer(mutex);
            const int before = counted;
            const std::lock_guard inner(mutex);
            const std::lock_guard innermost(mutex);
            counted = before + 1;
        }
    };
    std::array<std::thread, 4> threads;
    for (std::thread& thread : threads) {
        thread = std::thread(count);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(counted, 4 * rounds);
}

TEST(RecursiveMutex, IsGivenBackAsOftenAsItWasTaken) {
    RecursiveMutex mutex;
    bool isFree = false;
    mutex.lock();
    mutex.lock();
    mutex.unlock();
    std::thread other([&] {
        const std::lock_guard guard(mutex);
        EXPECT_TRUE(isFree);
    });
    isFree = true;
    mutex.unlock();
    other.join();
}

TEST(ConditionVariable, LetsASleeperGoWhenNotified) {
    Mutex mutex;
    ConditionVariable condition;
    bool isSet = false;
    std::thread notifier([&] {
        {
            const std::lock_guard guard(mutex);
            isSet = true;
        }
        condition.notifyOne();
    });
    {
        std::unique_lock lock(mutex);
        while (!isSet) {
            condition.waitFor(lock, 86'400'000);
        }
        EXPECT_TRUE(lock.owns_lock());
    }
    notifier.join();
}

TEST(ConditionVariable, LetsASleeperGoWhenTheLimitPasses) {
    Mutex mutex;
    ConditionVariable condition;
    std::unique_lock lock(mutex);
    condition.waitFor(lock, 1);
    EXPECT_TRUE(lock.owns_lock());
}

}  // namespace
}  // namespace korva::platform
