// The bell of the registry, by which processes wake one another.
#include "embedded_registry/bell.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>

#include "platform/registry.h"
#include "tests/support/own_registry.h"

namespace korva::platform::embedded {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::int64_t farMs = 60'000;

class RegistryBell : public testing::Test {
protected:
    /// Has two threads wake each other in turn, most of the time out of a sleep that would last a minute.
    static void wakeEachOther(Bell& one, Bell& other) {
        constexpr std::uint32_t turns = 200;
        const std::uint32_t first = one.count();
        const auto begin = Clock::now();
        std::thread answering([&] {
            for (std::uint32_t turn = 0; turn < turns; ++turn) {
                waitForRing(other, first + 2 * turn);
                other.ring();
            }
        });
        for (std::uint32_t turn = 0; turn < turns; ++turn) {
            one.ring();
            waitForRing(one, first + 2 * turn + 1);
        }
        answering.join();
        EXPECT_EQ(one.count(), first + 2 * turns);
        EXPECT_LT(Clock::now() - begin, std::chrono::seconds(30));
    }

    static void waitForRing(const Bell& bell, std::uint32_t count) {
        while (bell.count() == count) {
            bell.waitWhile(count, farMs);
        }
    }

    test::OwnRegistry registry;
    std::string path = registryPlace() + "-own-bell";
};

TEST_F(RegistryBell, IsHeardThroughAnotherViewOfItsFile) {
    // What another process has: the same page at another address.
    Bell one(path);
    Bell other(path);
    wakeEachOther(one, other);
}

TEST_F(RegistryBell, IsHeardInItsProcessWithoutAFile) {
    Bell bell("/proc/self/none/bell");
    wakeEachOther(bell, bell);
}

TEST_F(RegistryBell, IsHeardByThoseWhoHaveAFileThatIsGone) {
    Bell one(path);
    Bell other(path);
    std::filesystem::remove(path);
    wakeEachOther(one, other);
}

TEST_F(RegistryBell, EndsAWaitForACountThatIsOverAtOnce) {
    Bell bell(path);
    const std::uint32_t before = bell.count();
    bell.ring();
    const auto begin = Clock::now();
    bell.waitWhile(before, farMs);
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(30));
}

TEST_F(RegistryBell, GoesOnFromTheCountThatItsFileHas) {
    std::uint32_t last = 0;
    {
        Bell bell(path);
        bell.ring();
        last = bell.count();
    }
    EXPECT_EQ(Bell(path).count(), last);
}

}  // namespace
}  // namespace korva::platform::embedded
