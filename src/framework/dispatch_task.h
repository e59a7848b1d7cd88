// Work that a thread does later, and the handle that cancels it.
#pragma once

#include <atomic>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "framework/ref.h"
#include "framework/shared_count.h"
#include "framework/task_entry.h"
#include "framework/waitable_counter.h"

namespace korva::framework {

/// One piece of work for a dispatcher, on the heap: one allocation, whatever its callable holds. It is shared
/// by the queue, the thread that runs it, and its handles.
class DispatchTask : public SharedCount<DispatchTask> {
public:
    /// Which end of the queue it enters.
    enum class Place : std::uint8_t { back, front };

    virtual ~DispatchTask() = default;

    /// Runs the callable unless the task was cancelled, and is done in either case. What the callable raises
    /// goes on to the caller.  [the dispatcher's thread]
    void run();

    /// Whether it ran, or was skipped because it was cancelled. A refused task is never done.  [any]
    [[nodiscard]] bool isDone() const noexcept { return doneFlag.load(std::memory_order_acquire) != 0; }
    [[nodiscard]] bool isCancelled() const noexcept;

    /// Whoever runs it next skips it.  [any]
    void cancel();

    /// Not 0: the task is cancelled. The poster's, or null: a task of its own needs no more than a flag,
    /// since nobody waits for it.
    [[nodiscard]] const Ref<WaitableCounter>& cancelCounter() const noexcept { return sharedCancel; }

    [[nodiscard]] Place place() const noexcept { return queuePlace; }

protected:
    DispatchTask(Ref<WaitableCounter> cancel, Place place) noexcept
        : sharedCancel(std::move(cancel)), queuePlace(place) {}

private:
    friend class SharedCount<DispatchTask>;
    friend class TaskHandle;

    virtual void call() = 0;

    void dropHandle();

    const Ref<WaitableCounter> sharedCancel;
    std::atomic<std::uint64_t> doneFlag{0};
    std::atomic<std::uint32_t> handleCount{0};
    std::atomic<bool> cancelled{false};  // without a counter
    const Place queuePlace;
};

namespace detail {

template <class Function>
class CallableTask final : public DispatchTask {
public:
    template <class Callable>
    CallableTask(Callable&& callable, Ref<WaitableCounter> cancel, Place place)
        : DispatchTask(std::move(cancel), place), function(std::forward<Callable>(callable)) {}

private:
    void call() override {
        if constexpr (std::is_invocable_v<Function&, DispatchTask&>) {
            callTask(function, *this);
        } else {
            callTask(function);
        }
    }

    Function function;
};

}  // namespace detail

/// Makes a task of `callable`, which takes nothing, or the task itself to look whether it was cancelled. An
/// empty `std::function` or null pointer makes a task that raises `std::bad_function_call` when it is run.
template <class Callable>
Ref<DispatchTask> makeTask(Callable&& callable, Ref<WaitableCounter> cancel = {},
                           DispatchTask::Place place = DispatchTask::Place::back) {
    using Task = detail::CallableTask<std::decay_t<Callable>>;
    return Ref<DispatchTask>::adopt(new Task(std::forward<Callable>(callable), std::move(cancel), place));
}

/// A hold on a task that may be cancelled: when the last handle of a task goes before it has run, it never
/// runs. So a handle that nobody keeps cancels at once; `Dispatcher::postAndForget` gives none.
///
/// With a cancel counter of the poster's, the last handle sets that one: never hand over a counter that
/// means more than this task, an object's `closedCounter` for instance, together with a handle.
class TaskHandle {
public:
    TaskHandle() noexcept = default;
    explicit TaskHandle(Ref<DispatchTask> task) noexcept;
    TaskHandle(const TaskHandle& other) noexcept;
    TaskHandle(TaskHandle&& other) noexcept = default;
    TaskHandle& operator=(TaskHandle other) noexcept;
    ~TaskHandle();

    explicit operator bool() const noexcept { return static_cast<bool>(task); }
    [[nodiscard]] bool isDone() const noexcept { return task && task->isDone(); }

    /// Cancels the task for all its handles.  [any]
    void cancel();

    /// Waits until the task has run or was skipped; for ever if it was refused.  [any, blocks]
    void waitUntilDone() const;

private:
    Ref<DispatchTask> task;
};

}  // namespace korva::framework
