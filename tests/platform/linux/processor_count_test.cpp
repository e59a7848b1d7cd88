#include "platform/processor_count.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <cstddef>
#include <thread>

namespace korva::platform {
namespace {

cpu_set_t firstOf(const cpu_set_t& set) {
    cpu_set_t first;
    CPU_ZERO(&first);
    for (std::size_t processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (CPU_ISSET(processor, &set)) {
            CPU_SET(processor, &first);
            break;
        }
    }
    return first;
}

class ConfinedProcessorCount : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(sched_getaffinity(getpid(), sizeof(allowed), &allowed), 0); }
    void TearDown() override { sched_setaffinity(getpid(), sizeof(allowed), &allowed); }

    cpu_set_t allowed{};
};

TEST_F(ConfinedProcessorCount, CountsThoseThatTheProcessMayRunOn) {
    EXPECT_EQ(processorCount(), static_cast<unsigned>(CPU_COUNT(&allowed)));

    const cpu_set_t one = firstOf(allowed);
    ASSERT_EQ(sched_setaffinity(getpid(), sizeof(one), &one), 0);

    EXPECT_EQ(processorCount(), 1u);
}

TEST_F(ConfinedProcessorCount, IsTheSameOnAThreadThatIsConfinedItself) {
    if (CPU_COUNT(&allowed) < 2) {
        GTEST_SKIP() << "one processor only";
    }
    unsigned onThread = 0;
    std::thread confined([this, &onThread] {
        const cpu_set_t one = firstOf(allowed);
        EXPECT_EQ(sched_setaffinity(0, sizeof(one), &one), 0);
        onThread = processorCount();
    });
    confined.join();

    EXPECT_EQ(onThread, static_cast<unsigned>(CPU_COUNT(&allowed)));
}

}  // namespace
}  // namespace korva::platform
