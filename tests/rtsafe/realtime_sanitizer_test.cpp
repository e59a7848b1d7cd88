// Every way through the processing call under the compiler's real-time sanitizer, and proof that it sees what
// an engine does inside the call.
#include <gtest/gtest.h>
#include <time.h>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "rt/kernels/kernels.h"
#include "tests/rtsafe/process_combinations.h"
#include "tests/support/block_processors.h"
#include "tests/support/stream.h"

namespace korva::test {
namespace {

class RealtimeSanitizer : public testing::TestWithParam<const rt::Kernels*> {};
INSTANTIATE_TEST_SUITE_P(EveryVersion, RealtimeSanitizer,
                         testing::ValuesIn(rt::supportedKernels().begin(), rt::supportedKernels().end()),
                         [](const auto& parameter) { return std::string(parameter.param->name); });

// The sanitizer ends the process at its first finding, so reaching the end is the result.
TEST_P(RealtimeSanitizer, FindsNothingOnAnyWayThroughACall) {
    CombinationPlayer player(*GetParam());
    std::size_t played = 0;
    for (const Combination& combination : allCombinations()) {
        SCOPED_TRACE(nameOf(combination));
        player.prepare(combination);
        player.play();
        ++played;
    }
    EXPECT_EQ(played, std::size_t{864});
}

void playWithEngine(const std::function<void()>& deed) {
    Stream stream(formatOf(2), formatOf(2));
    CallingProcessor engine([&](rt::DspBlock&) { deed(); });
    stream.processor.exchangeEngine(&engine);
    stream.play(std::vector<float>(960));
}

constexpr int sanitizerExit = 43;

TEST(RealtimeSanitizerDeathTest, FindsAnAllocationInAnEngine) {
    std::vector<int> growing;
    EXPECT_EXIT(playWithEngine([&] { growing.push_back(1); }), testing::ExitedWithCode(sanitizerExit),
                "malloc");
}

TEST(RealtimeSanitizerDeathTest, FindsALockInAnEngine) {
    std::mutex mutex;
    EXPECT_EXIT(playWithEngine([&] { std::scoped_lock lock(mutex); }), testing::ExitedWithCode(sanitizerExit),
                "pthread_mutex_lock");
}

TEST(RealtimeSanitizerDeathTest, FindsASleepInAnEngine) {
    const timespec none{};
    EXPECT_EXIT(playWithEngine([&] { nanosleep(&none, nullptr); }), testing::ExitedWithCode(sanitizerExit),
                "nanosleep");
}

}  // namespace
}  // namespace korva::test
