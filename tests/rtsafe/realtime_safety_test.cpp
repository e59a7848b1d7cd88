// The processing call keeps the rules of the audio thread on every way through it; and the watch that says so
// sees each kind of violation.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "korva/module/realtime_watch/violations.h"
#include "rt/kernels/kernels.h"
#include "tests/rtsafe/process_combinations.h"
#include "tests/rtsafe/watched_thread.h"
#include "tests/support/block_processors.h"
#include "tests/support/stream.h"

namespace korva::test {
namespace {

using Play = void (CombinationPlayer::*)() noexcept;

void expectCleanOnEveryWay(const rt::Kernels& kernels, Play play) {
    const auto combinations = allCombinations();
    CombinationPlayer player(kernels);

    const WatchedResult result = runWatched([&] {
        for (std::size_t i = 0; i < combinations.size(); ++i) {
            noteProgress(static_cast<int>(i));
            player.prepare(combinations[i]);
            (player.*play)();
        }
    });

    EXPECT_TRUE(result.clean) << result.violation << " on the way of "
                              << nameOf(combinations[static_cast<std::size_t>(result.progress)]);
    EXPECT_EQ(result.progress, static_cast<int>(combinations.size()) - 1);
}

class RealtimeSafety : public testing::TestWithParam<const rt::Kernels*> {};
INSTANTIATE_TEST_SUITE_P(EveryVersion, RealtimeSafety,
                         testing::ValuesIn(rt::supportedKernels().begin(), rt::supportedKernels().end()),
                         [](const auto& parameter) { return std::string(parameter.param->name); });

TEST_P(RealtimeSafety, ProcessingNeitherAllocatesNorLocksNorWaitsNorCallsTheSystem) {
    expectCleanOnEveryWay(*GetParam(), &CombinationPlayer::play);
}

TEST(DirectCopySafety, CopyingNeitherAllocatesNorLocksNorWaitsNorCallsTheSystem) {
    expectCleanOnEveryWay(rt::chosenKernels(), &CombinationPlayer::playDirectCopy);
}

TEST(ProcessCombinations, AreAllThereAre) {
    EXPECT_EQ(allCombinations().size(), std::size_t{2 * 2 * 2 * 3 * 2 * 3 * 2 * 3});
}

/// Runs a processing call whose engine does `deed`, on a watched thread.
WatchedResult runWithEngine(const std::function<void()>& deed) {
    Stream stream(formatOf(2), formatOf(2));
    CallingProcessor engine([&](rt::DspBlock&) { deed(); });
    stream.processor.exchangeEngine(&engine);
    std::vector<float> samples(960);
    auto input = connectionTo(samples, 480);
    auto output = connectionTo(samples, 0);
    return runWatched([&] { process(stream.processor, input, output); });
}

TEST(Watch, LetsAnEngineCalculateAndReadTheMonotonicClock) {
    volatile float sum = 0.0f;
    timespec now{};

    const WatchedResult result = runWithEngine([&] {
        sum = sum + 1.0f;
        clock_gettime(CLOCK_MONOTONIC, &now);
    });

    EXPECT_TRUE(result.clean) << result.violation;
}

TEST(Watch, IsOfAProgramThatHasTheWatchedFunctions) {
    EXPECT_TRUE(tool::functionsAreWatched());
}

TEST(Watch, NamesAnAllocation) {
    std::vector<int> growing;
    void* volatile memory = nullptr;

    EXPECT_EQ(runWithEngine([&] { growing.push_back(1); }).violation, "malloc");
    EXPECT_EQ(runWithEngine([&] { memory = std::calloc(1, 8); }).violation, "calloc");
    EXPECT_EQ(runWithEngine([&] { memory = std::aligned_alloc(64, 64); }).violation, "aligned_alloc");
    void* aligned = nullptr;
    EXPECT_EQ(runWithEngine([&] { static_cast<void>(posix_memalign(&aligned, 64, 64)); }).violation,
              "posix_memalign");
}

TEST(Watch, NamesAChangeOfSizeAndARelease) {
    void* volatile memory = std::malloc(8);
    void* volatile grown = nullptr;
    auto number = std::make_unique<int>(1);

    EXPECT_EQ(runWithEngine([&] { grown = std::realloc(memory, 64); }).violation, "realloc");
    EXPECT_EQ(runWithEngine([&] { std::free(memory); }).violation, "free");
    EXPECT_EQ(runWithEngine([&] { number.reset(); }).violation, "free");

    std::free(memory);
}

TEST(Watch, NamesALockThatNobodyHolds) {
    std::mutex mutex;
    std::shared_mutex sharedMutex;

    EXPECT_EQ(runWithEngine([&] { std::scoped_lock lock(mutex); }).violation, "pthread_mutex_lock");
    EXPECT_EQ(runWithEngine([&] { std::unique_lock lock(mutex, std::try_to_lock); }).violation,
              "pthread_mutex_trylock");
    EXPECT_EQ(runWithEngine([&] { std::shared_lock lock(sharedMutex); }).violation, "pthread_rwlock_rdlock");
    EXPECT_EQ(runWithEngine([&] { std::unique_lock lock(sharedMutex); }).violation, "pthread_rwlock_wrlock");
}

TEST(Watch, NamesAWait) {
    std::mutex mutex;
    std::unique_lock<std::mutex> lock(mutex);
    std::condition_variable condition;
    sem_t semaphore{};
    sem_init(&semaphore, 0, 1);

    EXPECT_EQ(runWithEngine([&] { condition.wait(lock); }).violation, "pthread_cond_wait");
    EXPECT_EQ(runWithEngine([&] { sem_wait(&semaphore); }).violation, "sem_wait");

    sem_destroy(&semaphore);
}

std::string systemCall(long number) {
    return "system call " + std::to_string(number);
}

TEST(Watch, NamesASystemCallByItsNumber) {
    EXPECT_EQ(runWithEngine([] { static_cast<void>(getppid()); }).violation, systemCall(SYS_getppid));
    EXPECT_EQ(runWithEngine([] { static_cast<void>(write(1, "", 0)); }).violation, systemCall(SYS_write));
}

TEST(Watch, NamesGivingTheProcessorAwayAndSleeping) {
    const timespec none{};

    EXPECT_EQ(runWithEngine([] { sched_yield(); }).violation, systemCall(SYS_sched_yield));
    EXPECT_EQ(runWithEngine([&] { nanosleep(&none, nullptr); }).violation, systemCall(SYS_clock_nanosleep));
}

TEST(Watch, NamesAClockThatTheKernelMustRead) {
    timespec now{};

    EXPECT_EQ(runWithEngine([&] { clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now); }).violation,
              systemCall(SYS_clock_gettime));
}

TEST(Watch, NamesAnExceptionThoughItIsCaught) {
    int caught = 0;
    const WatchedResult result = runWithEngine([&] {
        try {
            throw 1;
        } catch (int number) {
            caught = number;
        }
    });

    EXPECT_EQ(result.violation, "__cxa_allocate_exception");
}

}  // namespace
}  // namespace korva::test
