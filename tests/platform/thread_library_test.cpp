#include "tests/platform/thread_library.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <string>

#include "platform/wait_handles.h"
#include "tests/support/loaded_library.h"

namespace korva::platform {
namespace {

using test::Errand;
using test::isLoaded;
using test::LoadedLibrary;

const std::string libraryPath = KORVA_THREAD_LIBRARY;

template <typename Condition>
bool comesTrue(Condition condition) {
    const Event never;
    const std::array handles{never.handle()};
    const WaitLimit limit(20'000);
    while (!condition()) {
        if (limit.hasPassed()) {
            return false;
        }
        waitForHandles(handles, 1);
    }
    return true;
}

bool libraryGoes() {
    return comesTrue([] { return !isLoaded(libraryPath); });
}

bool start(const LoadedLibrary& library, Errand& errand) {
    return library.function<test::StartWaitingThread>("startWaitingThread")(&errand) &&
           comesTrue([&errand] { return errand.isRunning.load(); });
}

TEST(ThreadLibrary, IsLoadedOnlyWhileSomebodyHoldsIt) {
    ASSERT_FALSE(isLoaded(libraryPath));
    LoadedLibrary library(libraryPath);
    ASSERT_TRUE(isLoaded(libraryPath));

    library.close();

    EXPECT_FALSE(isLoaded(libraryPath));
}

TEST(ThreadLibrary, StaysLoadedWhileItsThreadRunsAndGoesWithTheThread) {
    // Often enough for what a process has 1024 of (its keys of thread-specific data) to run out.
    for (int round = 0; round < 1200; ++round) {
        Event mayEnd;
        Errand errand{mayEnd.handle()};
        LoadedLibrary library(libraryPath);
        ASSERT_TRUE(start(library, errand)) << "round " << round;

        library.close();
        ASSERT_TRUE(isLoaded(libraryPath)) << "round " << round;

        mayEnd.signal();
        ASSERT_TRUE(libraryGoes()) << "round " << round;
        ASSERT_EQ(errand.answer, test::libraryAnswer);
    }
}

TEST(ThreadLibrary, StaysLoadedUntilTheLastOfItsThreadsEnds) {
    Event firstMayEnd;
    Event lastMayEnd;
    Errand first{firstMayEnd.handle()};
    Errand last{lastMayEnd.handle()};
    LoadedLibrary library(libraryPath);
    ASSERT_TRUE(start(library, first));
    ASSERT_TRUE(start(library, last));
    library.close();

    firstMayEnd.signal();
    ASSERT_TRUE(comesTrue([&first] { return first.answer != 0; }));
    EXPECT_TRUE(isLoaded(libraryPath));

    lastMayEnd.signal();
    EXPECT_TRUE(libraryGoes());
    EXPECT_EQ(last.answer, test::libraryAnswer);
}

TEST(ThreadLibrary, StaysLoadedForTheHostWhenItsThreadEnds) {
    Event mayEnd;
    mayEnd.signal();
    Errand errand{mayEnd.handle()};
    LoadedLibrary library(libraryPath);

    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(library.function<test::RunThread>("runThread")(&errand));
    }

    EXPECT_TRUE(isLoaded(libraryPath));
}

TEST(ThreadLibrary, IsHeldNoMoreByAThreadThatWasJoined) {
    Event mayEnd;
    mayEnd.signal();
    Errand errand{mayEnd.handle()};
    for (int round = 0; round < 200; ++round) {
        LoadedLibrary library(libraryPath);
        ASSERT_TRUE(library.function<test::RunThread>("runThread")(&errand));

        library.close();

        ASSERT_FALSE(isLoaded(libraryPath)) << "round " << round;
    }
}

}  // namespace
}  // namespace korva::platform
