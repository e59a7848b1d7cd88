// The tasks of a dispatcher.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "framework/dispatch_task.h"
#include "framework/ref.h"
#include "framework/task_entry.h"
#include "framework/waitable_counter.h"

namespace korva::framework {

/// Tasks in the order in which they will run: those pushed to the front, the latest first, then the others in
/// their order. Any thread pushes, one thread runs. That thread takes whatever is there at once, so it meets
/// the others once a batch and not once a task; small callables lie in the queue itself, one behind the
/// other, so that no task waits for the memory of the one before.
class TaskQueue {
public:
    TaskQueue() = default;
    TaskQueue(const TaskQueue&) = delete;
    TaskQueue& operator=(const TaskQueue&) = delete;
    ~TaskQueue();

    /// Queues a callable that fits an entry. False, with nothing kept, if the queue is closed.  [any]
    template <class Callable>
    requires TaskEntry::fits<std::decay_t<Callable>>
    bool push(Callable&& callable) {
        bool accepted = false;
        // Made here: a copy may raise something, or push to this queue.
        std::decay_t<Callable> function(std::forward<Callable>(callable));
        pushedCount.update([&](std::uint32_t& count) {
            if (!isClosed) {
                pushed.append().store(std::move(function));
                ++count;
                accepted = true;
            }
        });
        return accepted;
    }

    /// Queues a task at the end that it asks for. False if the queue is closed.  [any]
    bool push(Ref<DispatchTask> task);

    /// Runs the next task; false if there is none. What it raises goes on to the caller; the task is done
    /// with all the same.  [the running thread]
    bool runNext();

    /// Takes no more tasks from now on; those that it has stay.  [any]
    void close();

    /// Whether `runNext` would run nothing.  [the running thread]
    [[nodiscard]] bool isEmpty() const noexcept {
        return fronts.empty() && taken.isEmpty() && pushedCount.get() == 0;
    }

    /// Not 0 while there are tasks that the running thread has not taken: to be waited for.  [any]
    [[nodiscard]] WaitableCounter& count() noexcept { return pushedCount; }

private:
    /// Some entries, one behind the other.
    struct Chunk {
        static constexpr std::size_t places = 31;

        std::unique_ptr<Chunk> next;  // never empty
        std::size_t begin = 0;        // the first full entry
        std::size_t end = 0;          // behind the last one
        TaskEntry entries[places];
    };

    /// A list of chunks.
    struct Chunks {
        std::unique_ptr<Chunk> first;
        Chunk* last = nullptr;
        std::unique_ptr<Chunk> spare;  // one that was emptied

        ~Chunks();
        [[nodiscard]] bool isEmpty() const noexcept {
            return first == nullptr || (first->begin == first->end && first->next == nullptr);
        }
        TaskEntry& append();
        /// The first entry, which is the caller's to empty before the next call; null if there is none.
        TaskEntry* next();
    };

    void take();
    void takeFronts();

    static constexpr std::size_t cacheLine = 64;  // of every processor that this runs on, or a part of it

    // Under the mutex of the count, which counts both.
    WaitableCounter pushedCount;
    Chunks pushed;
    std::vector<Ref<DispatchTask>> pushedFronts;  // the latest last
    bool isClosed = false;

    // Apart from the rest: the running thread looks at it for each task, while others push.
    alignas(cacheLine) std::atomic<bool> hasPushedFronts{false};

    // The running thread's.
    Chunks taken;
    std::vector<Ref<DispatchTask>> fronts;  // the next one last
};

}  // namespace korva::framework
