#include "framework/dispatch_task.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <thread>
#include <utility>

namespace korva::framework {
namespace {

TEST(DispatchTask, RunsItsCallableAndIsDone) {
    int runs = 0;
    const auto task = makeTask([&runs] { ++runs; });
    EXPECT_FALSE(task->isDone());
    EXPECT_FALSE(task->isCancelled());

    task->run();

    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(task->isDone());
    EXPECT_FALSE(task->isCancelled());
}

TEST(DispatchTask, IsDoneAlthoughItWasSkippedBecauseItWasCancelled) {
    int runs = 0;
    const auto task = makeTask([&runs] { ++runs; });
    task->cancel();

    task->run();

    EXPECT_EQ(runs, 0);
    EXPECT_TRUE(task->isDone());
    EXPECT_TRUE(task->isCancelled());
}

TEST(DispatchTask, GivesItselfToACallableThatTakesIt) {
    const DispatchTask* given = nullptr;
    bool wasCancelled = true;
    const auto task = makeTask([&](DispatchTask& self) {
        given = &self;
        wasCancelled = self.isCancelled();
        self.cancel();
    });
    task->run();
    EXPECT_EQ(given, task.get());
    EXPECT_FALSE(wasCancelled);
    EXPECT_TRUE(task->isCancelled());
}

TEST(DispatchTask, WithoutAFunctionRaisesBadFunctionCallAndIsDone) {
    const auto empty = makeTask(std::function<void()>());
    EXPECT_THROW(empty->run(), std::bad_function_call);
    EXPECT_TRUE(empty->isDone());

    const auto emptyWithTask = makeTask(std::function<void(DispatchTask&)>());
    EXPECT_THROW(emptyWithTask->run(), std::bad_function_call);
    EXPECT_TRUE(emptyWithTask->isDone());

    const auto null = makeTask(static_cast<void (*)()>(nullptr));
    EXPECT_THROW(null->run(), std::bad_function_call);
    EXPECT_TRUE(null->isDone());

    const auto nullWithTask = makeTask(static_cast<void (*)(DispatchTask&)>(nullptr));
    EXPECT_THROW(nullWithTask->run(), std::bad_function_call);
    EXPECT_TRUE(nullWithTask->isDone());
}

TEST(DispatchTask, WithoutAFunctionRaisesNothingOnceCancelled) {
    const auto empty = makeTask(std::function<void()>());
    empty->cancel();
    EXPECT_NO_THROW(empty->run());
    EXPECT_TRUE(empty->isDone());
}

TEST(DispatchTask, IsDoneWhenItsCallableRaises) {
    const auto task = makeTask([] { throw std::runtime_error("raised"); });
    EXPECT_THROW(task->run(), std::runtime_error);
    EXPECT_TRUE(task->isDone());
}

TEST(DispatchTask, RunsFunctionsAndCallablesThatOnlyMove) {
    static int runs = 0;
    runs = 0;
    makeTask(+[] { ++runs; })->run();
    makeTask([own = std::make_unique<int>(5)] { runs += *own; })->run();
    EXPECT_EQ(runs, 6);
}

TEST(DispatchTask, KeepsItsCallableUntilItsLastShareGoes) {
    const auto held = std::make_shared<int>();
    auto task = makeTask([held] {});
    Ref<DispatchTask> second = task;
    task->run();
    task = nullptr;
    EXPECT_EQ(held.use_count(), 2);
    second = nullptr;
    EXPECT_EQ(held.use_count(), 1);
}

TEST(DispatchTask, StandsAtTheBackUnlessToldOtherwise) {
    EXPECT_EQ(makeTask([] {})->place(), DispatchTask::Place::back);
    EXPECT_EQ(makeTask([] {}, {}, DispatchTask::Place::front)->place(), DispatchTask::Place::front);
}

TEST(DispatchTask, IsCancelledByItselfUnlessItSharesACounter) {
    const auto first = makeTask([] {});
    const auto second = makeTask([] {});
    EXPECT_FALSE(static_cast<bool>(first->cancelCounter()));
    first->cancel();
    EXPECT_FALSE(second->isCancelled());

    const auto shared = Ref<WaitableCounter>::adopt(new WaitableCounter);
    const auto third = makeTask([] {}, shared);
    const auto fourth = makeTask([] {}, shared);
    EXPECT_EQ(third->cancelCounter(), shared);
    EXPECT_FALSE(third->isCancelled());
    shared->set(1);
    EXPECT_TRUE(third->isCancelled());
    EXPECT_TRUE(fourth->isCancelled());
}

TEST(DispatchTask, WithoutHandlesIsNotCancelledByTheirAbsence) {
    bool ran = false;
    makeTask([&ran] { ran = true; })->run();
    EXPECT_TRUE(ran);
}

TEST(TaskHandle, CancelsWhenTheLastOneGoes) {
    const auto task = makeTask([] {});
    {
        const TaskHandle handle(task);
        EXPECT_FALSE(task->isCancelled());
    }
    EXPECT_TRUE(task->isCancelled());
}

TEST(TaskHandle, KeepsTheTaskAsLongAsACopyIsLeft) {
    const auto task = makeTask([] {});
    auto first = std::make_unique<TaskHandle>(task);
    auto second = std::make_unique<TaskHandle>(*first);
    auto third = std::make_unique<TaskHandle>();
    *third = *second;

    first = nullptr;
    EXPECT_FALSE(task->isCancelled());
    second = nullptr;
    EXPECT_FALSE(task->isCancelled());
    third = nullptr;
    EXPECT_TRUE(task->isCancelled());
}

TEST(TaskHandle, MovesWithoutCancelling) {
    const auto task = makeTask([] {});
    TaskHandle first(task);
    TaskHandle second(std::move(first));
    TaskHandle third;
    third = std::move(second);
    EXPECT_FALSE(task->isCancelled());
    EXPECT_TRUE(static_cast<bool>(third));

    third = TaskHandle();
    EXPECT_TRUE(task->isCancelled());
    EXPECT_FALSE(static_cast<bool>(third));
}

TEST(TaskHandle, AssignedToItselfCancelsNothing) {
    const auto task = makeTask([] {});
    TaskHandle handle(task);
    const TaskHandle& same = handle;
    handle = same;
    EXPECT_FALSE(task->isCancelled());
}

TEST(TaskHandle, CancelsForAllOfThem) {
    const auto task = makeTask([] {});
    TaskHandle first(task);
    const TaskHandle second(first);
    first.cancel();
    EXPECT_TRUE(task->isCancelled());
    EXPECT_TRUE(static_cast<bool>(second));
}

TEST(TaskHandle, SetsTheCancelCounterThatWasGivenToItsTask) {
    const auto shared = Ref<WaitableCounter>::adopt(new WaitableCounter);
    const auto task = makeTask([] {}, shared);
    { const TaskHandle handle(task); }
    EXPECT_EQ(shared->get(), 1U);

    shared->set(0);
    TaskHandle second(task);
    second.cancel();
    EXPECT_EQ(shared->get(), 1U);
}

TEST(TaskHandle, OfNoTaskDoesNothing) {
    TaskHandle none;
    EXPECT_FALSE(static_cast<bool>(none));
    EXPECT_FALSE(none.isDone());
    none.cancel();
    none.waitUntilDone();
    const TaskHandle copy = none;
    EXPECT_FALSE(static_cast<bool>(copy));
}

TEST(TaskHandle, TellsWhenTheTaskIsDone) {
    const auto task = makeTask([] {});
    const TaskHandle handle(task);
    EXPECT_FALSE(handle.isDone());
    task->run();
    EXPECT_TRUE(handle.isDone());
    handle.waitUntilDone();
}

TEST(TaskHandle, LetsAThreadWaitUntilTheTaskIsDone) {
    for (const bool isCancelled : {false, true}) {
        std::atomic<int> runs{0};
        const auto task = makeTask([&runs] { ++runs; });
        TaskHandle handle(task);
        if (isCancelled) {
            handle.cancel();
        }
        int runsSeen = -1;
        std::thread waiter([&] {
            handle.waitUntilDone();
            runsSeen = runs;
        });
        task->run();
        waiter.join();
        EXPECT_EQ(runsSeen, isCancelled ? 0 : 1);
    }
}

}  // namespace
}  // namespace korva::framework
