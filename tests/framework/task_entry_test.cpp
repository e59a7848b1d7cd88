#include "framework/task_entry.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>

#include "framework/task_queue.h"

namespace korva::framework {
namespace {

TEST(TaskEntry, IsACacheLine) {
    EXPECT_EQ(sizeof(TaskEntry), 64U);
}

TEST(TaskEntry, FitsWhatIsNoLargerThanItsRoomAndMovesWithoutRaising) {
    struct MoveMayRaise {
        MoveMayRaise() = default;
        MoveMayRaise(MoveMayRaise&&) noexcept(false) {}
        void operator()() const {}
    };
    EXPECT_TRUE((TaskEntry::fits<std::array<char, TaskEntry::room>>));
    EXPECT_FALSE((TaskEntry::fits<std::array<char, TaskEntry::room + 1>>));
    EXPECT_FALSE(TaskEntry::fits<MoveMayRaise>);
}

TEST(TaskEntry, RunsWhatItHasAndLetsGoOfIt) {
    const auto held = std::make_shared<int>(0);
    TaskEntry entry;
    entry.store([held] { ++*held; });
    EXPECT_EQ(held.use_count(), 2);
    entry.run();
    EXPECT_EQ(*held, 1);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(TaskEntry, DropsWhatItHasWithoutRunningIt) {
    const auto held = std::make_shared<int>(0);
    TaskEntry entry;
    entry.store([held] { ++*held; });
    entry.drop();
    EXPECT_EQ(*held, 0);
    EXPECT_EQ(held.use_count(), 1);
}

TEST(TaskEntry, MayBeFilledAnewByWhatItRuns) {
    int runs = 0;
    TaskEntry entry;
    entry.store([&] {
        ++runs;
        entry.store([&runs] { ++runs; });
    });
    entry.run();
    entry.run();
    EXPECT_EQ(runs, 2);
}

TEST(TaskEntry, RaisesForANullFunctionPointer) {
    TaskEntry entry;
    void (*none)() = nullptr;
    entry.store(std::move(none));
    EXPECT_THROW(entry.run(), std::bad_function_call);
}

/// A callable whose copy raises, and whose move doesn't.
struct CopyRaises {
    CopyRaises() = default;
    CopyRaises(const CopyRaises&) { throw std::runtime_error("copied"); }
    CopyRaises(CopyRaises&&) noexcept {}
    void operator()() const { FAIL() << "run"; }
};

TEST(TaskQueue, TakesNothingWhenACopyRaises) {
    TaskQueue queue;
    const CopyRaises callable;
    EXPECT_THROW(queue.push(callable), std::runtime_error);
    EXPECT_TRUE(queue.isEmpty());
    EXPECT_FALSE(queue.runNext());
}

}  // namespace
}  // namespace korva::framework
