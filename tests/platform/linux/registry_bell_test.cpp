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

class RegistryBell : public testing::Test {
protected:
    /// Has two threads wake each other in turn, most of the time out of a sleep that would last a second.
    void wakeEachOther(Bell& one, Bell& other) const {
        constexpr std::uint32_t turns = 200;
        const std::uint32_t first = one.count();
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
        EXPECT_LT(Clock::now(), end);
    }

    void waitForRing(const Bell& bell, std::uint32_t count) const {
        while (bell.count() == count && Clock::now() < end) {
            bell.waitWhile(count, 1000);
        }
    }

    const Clock::time_point end = Clock::now() + std::chrono::seconds(30);
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
    bell.waitWhile(before, 60'000);
    EXPECT_LT(Clock::now(), end);
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
