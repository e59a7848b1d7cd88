#include "platform/processor_count.h"

#include <gtest/gtest.h>

#include <thread>

namespace korva::platform {
namespace {

TEST(ProcessorCount, IsAtLeastOneAndNoMoreThanTheMachineHas) {
    EXPECT_GE(processorCount(), 1u);
    EXPECT_LE(processorCount(), std::thread::hardware_concurrency());
}

}  // namespace
}  // namespace korva::platform
