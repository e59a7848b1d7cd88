#include "framework/delay_pool.h"

#include <array>
#include <utility>

#include "framework/wait_any.h"

namespace korva::framework {

namespace {

constexpr std::size_t initialSlots = 16;

}  // namespace

DelayWorker::DelayWorker() : ObjectClass(RootType{}, false, nullptr) {}

/// A worker in use, and a share of its pool.
class DelayPool::Borrowed {
public:
    explicit Borrowed(std::shared_ptr<DelayPool> lender) : pool(std::move(lender)), worker(pool->take()) {}
    Borrowed(Borrowed&&) noexcept = default;
    ~Borrowed() {
        if (worker) {
            pool->giveBack(*worker);
        }
    }

    DelayWorker& operator*() const noexcept { return *worker; }
    DelayWorker* operator->() const noexcept { return worker.get(); }

private:
    // The worker goes first: a pool that ends on that worker's thread then has the last share of it.
    std::shared_ptr<DelayPool> pool;
    Ref<DelayWorker> worker;
};

DelayPool::DelayPool() {
    doubleSlots();
}

void DelayPool::delay(const std::shared_ptr<DelayPool>& pool, Dispatcher& target, Ref<DispatchTask> task,
                      std::int64_t delayMs) {
    Borrowed borrowed(pool);
    DelayWorker& worker = *borrowed;
    worker.postAndForget([borrowed = std::move(borrowed), weakTarget = WeakRef<Dispatcher>(target),
                          targetStop = target.stopRequest(), task = std::move(task), delayMs] {
        std::array<std::uint32_t, 3> seen{};
        std::array waits{WaitRegistration(*task->cancelCounter(), seen[0]),
                         WaitRegistration(*targetStop, seen[1]),
                         WaitRegistration(*borrowed->stopRequest(), seen[2])};
        if (waitAny(waits, delayMs) >= 0) {
            return;
        }
        if (const Ref<Dispatcher> alive = weakTarget.lock()) {
            alive->push(task);
        }
    });
}

Ref<DelayWorker> DelayPool::take() {
    const std::lock_guard guard(mutex);
    if (unusedIndices.empty()) {
        doubleSlots();
    }
    const std::size_t index = unusedIndices.back();
    if (!workers[index]) {
        const Ref<DelayWorker> made = create<DelayWorker>();
        DispatcherUse use{Ref<Dispatcher>(made)};
        made->startThread();
        workers[index] = std::move(use);
    }
    unusedIndices.pop_back();
    ++usedCount;
    Ref<DelayWorker> worker = Ref<DelayWorker>::share(static_cast<DelayWorker*>(workers[index].get()));
    worker->poolIndex = static_cast<int>(index);
    return worker;
}

void DelayPool::giveBack(DelayWorker& worker) noexcept {
    const std::lock_guard guard(mutex);
    unusedIndices.push_back(static_cast<std::size_t>(worker.poolIndex));  // has room for all of them
    worker.poolIndex = -1;
    --usedCount;
}

// The lowest index is used first.
void DelayPool::doubleSlots() {
    const std::size_t count = workers.size();
    const std::size_t doubled = count == 0 ? initialSlots : 2 * count;
    unusedIndices.reserve(doubled);
    workers.resize(doubled);
    for (std::size_t index = doubled; index > count; --index) {
        unusedIndices.push_back(index - 1);
    }
}

Dispatcher::DelayCounts DelayPool::counts() {
    const std::lock_guard guard(mutex);
    std::size_t made = 0;
    for (const DispatcherUse& worker : workers) {
        made += worker ? 1U : 0U;
    }
    return {usedCount, made};
}

}  // namespace korva::framework
