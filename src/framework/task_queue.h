// The tasks of a dispatcher.
#pragma once

#include <atomic>
#include <cstddef>

#include "framework/dispatch_task.h"
#include "framework/ref.h"
#include "framework/waitable_counter.h"

namespace korva::framework {

/// Tasks in the order in which they will run: those pushed to the front, the latest first, then the others in
/// their order. Any thread pushes, by one exchange; one thread takes. That thread takes whatever is there at
/// once and keeps it in lists of its own, so that it meets the others once a batch and not once a task.
///
/// The bell (`bell`) rings when something was pushed to an empty list. It may ring when nothing is left, but
/// never stays silent while something is there and the taking thread has not been told of it.
class TaskQueue {
public:
    TaskQueue() = default;
    TaskQueue(const TaskQueue&) = delete;
    TaskQueue& operator=(const TaskQueue&) = delete;
    ~TaskQueue();

    /// Queues a task. False, with the reference dropped, if the queue is closed.  [any]
    bool push(Ref<DispatchTask> task);

    /// The next task; null if there is none.  [the taking thread]
    [[nodiscard]] Ref<DispatchTask> pop();

    /// Takes no more tasks from now on; those that it has stay.  [the taking thread]
    void close();

    /// Whether a `pop` would give a task, to look at without waiting.  [the taking thread]
    [[nodiscard]] bool isEmpty() const noexcept {
        return fronts == nullptr && backs == nullptr && !hasPushed(pushedFronts) && !hasPushed(pushedBacks);
    }

    /// Not 0 when tasks have been pushed: to be waited for.  [any]
    [[nodiscard]] WaitableCounter& bell() noexcept { return pushedBell; }

private:
    using Pushed = std::atomic<DispatchTask*>;

    static constexpr std::size_t cacheLine = 64;  // of every processor that this runs on, or a part of it

    [[nodiscard]] static bool hasPushed(const Pushed& list) noexcept;
    void take();
    void takeFronts();
    void takeBacks();

    // Linked by `DispatchTask::next`, the latest first; each entry is one reference. The two lie apart, since
    // the taking thread looks at the first for each task, while others write to the second.
    alignas(cacheLine) Pushed pushedBacks{nullptr};
    alignas(cacheLine) WaitableCounter pushedBell;
    alignas(cacheLine) Pushed pushedFronts{nullptr};

    // The taking thread's, in the order in which they will run.
    DispatchTask* fronts = nullptr;
    DispatchTask* backs = nullptr;
    bool isClosed = false;
};

}  // namespace korva::framework
