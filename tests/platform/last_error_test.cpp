#include "platform/last_error.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>

namespace korva::platform {
namespace {

TEST(LastError, IsWhatWasSetLast) {
    for (const std::uint32_t error : {13u, 0u, 0xFFFFFFFFu, 1630u}) {
        setLastError(error);
        EXPECT_EQ(lastError(), error);
        EXPECT_EQ(lastError(), error);
    }
}

TEST(LastError, IsEachThreadsOwn) {
    std::uint32_t othersFirst = 99;
    std::uint32_t othersLast = 0;
    // The two meet without a call of the system's, which may leave an error of its own.
    std::atomic<int> step{0};
    const auto waitFor = [&step](int wanted) {
        while (step.load() != wanted) {
        }
    };
    std::thread other([&] {
        othersFirst = lastError();
        waitFor(1);
        setLastError(1630);
        step = 2;
        waitFor(3);
        othersLast = lastError();
    });
    setLastError(13);
    step = 1;
    waitFor(2);
    const std::uint32_t own = lastError();
    setLastError(5);
    step = 3;
    other.join();

    EXPECT_EQ(othersFirst, 0u);
    EXPECT_EQ(own, 13u);
    EXPECT_EQ(othersLast, 1630u);
}

}  // namespace
}  // namespace korva::platform
