// Threads that wait for the time of delayed tasks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "framework/dispatcher.h"
#include "platform/mutex.h"

namespace korva::framework {

/// A thread that waits for one delay at a time.
class DelayWorker final : public ObjectClass<DelayWorker, Dispatcher> {
public:
    DelayWorker();

private:
    friend class DelayPool;

    int poolIndex = -1;  // under the pool's mutex; -1 while it waits for nothing
};

/// The workers for a dispatcher's delayed tasks: each waits for one task, so there are as many as tasks have
/// waited at once. A worker is made on its first use and kept for the next task. Whoever waits shares the
/// pool, so it may end on one of its own workers.  [any]
class DelayPool {
public:
    DelayPool();
    DelayPool(const DelayPool&) = delete;
    DelayPool& operator=(const DelayPool&) = delete;

    /// Gives `task` to `target` in `delayMs` milliseconds, unless it is cancelled or `target` stops before.
    /// Keeps no reference to `target`.
    static void delay(const std::shared_ptr<DelayPool>& pool, Dispatcher& target, Ref<DispatchTask> task,
                      std::int64_t delayMs);

    [[nodiscard]] Dispatcher::DelayCounts counts();

private:
    class Borrowed;

    Ref<DelayWorker> take();
    void giveBack(DelayWorker& worker) noexcept;
    void doubleSlots();

    platform::Mutex mutex;
    std::vector<DispatcherUse> workers;      // by index; empty until first used
    std::vector<std::size_t> unusedIndices;  // a stack
    std::size_t usedCount = 0;
};

}  // namespace korva::framework
