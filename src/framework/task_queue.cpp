#include "framework/task_queue.h"

#include <utility>

namespace korva::framework {

namespace {

// Stands for the list of a closed queue. Not a task: only its address counts.
alignas(DispatchTask) constinit char closedMark = 0;

DispatchTask* closedList() noexcept {
    return reinterpret_cast<DispatchTask*>(&closedMark);
}

bool isList(const DispatchTask* tasks) noexcept {
    return tasks != nullptr && tasks != closedList();
}

}  // namespace

TaskQueue::~TaskQueue() {
    while (pop()) {
    }
}

bool TaskQueue::hasPushed(const Pushed& list) noexcept {
    return isList(list.load(std::memory_order_acquire));
}

// Taking empties a list whole, so an address that comes back means the same list: the exchange has no ABA.
bool TaskQueue::push(Ref<DispatchTask> task) {
    Pushed& list = task->place() == DispatchTask::Place::front ? pushedFronts : pushedBacks;
    DispatchTask* latest = list.load(std::memory_order_relaxed);
    do {
        if (latest == closedList()) {
            return false;
        }
        task->next = latest;
    } while (!list.compare_exchange_weak(latest, task.get(), std::memory_order_release,
                                         std::memory_order_relaxed));
    static_cast<void>(task.giveUp());
    // Whoever pushes to a list with tasks in it leaves the bell to the one who found it empty.
    if (latest == nullptr) {
        pushedBell.set(1);
    }
    return true;
}

Ref<DispatchTask> TaskQueue::pop() {
    // Fronts overtake what has been taken already.
    if (hasPushed(pushedFronts)) {
        takeFronts();
    }
    if (fronts == nullptr && backs == nullptr) {
        takeBacks();
    }
    DispatchTask*& first = fronts != nullptr ? fronts : backs;
    if (first == nullptr) {
        return {};
    }
    auto task = Ref<DispatchTask>::adopt(first);
    first = std::exchange(task->next, nullptr);
    return task;
}

void TaskQueue::takeFronts() {
    DispatchTask* const pushed =
        pushedFronts.exchange(isClosed ? closedList() : nullptr, std::memory_order_acquire);
    if (!isList(pushed)) {
        return;
    }
    DispatchTask* oldest = pushed;
    while (oldest->next != nullptr) {
        oldest = oldest->next;
    }
    oldest->next = fronts;
    fronts = pushed;
}

void TaskQueue::close() {
    isClosed = true;
    takeFronts();
    takeBacks();
}

// The bell goes silent first: a push that finds the list empty comes after the exchange, and rings anew.
void TaskQueue::takeBacks() {
    if (pushedBell.get() != 0) {
        pushedBell.set(0);
    }
    DispatchTask* pushed = pushedBacks.exchange(isClosed ? closedList() : nullptr, std::memory_order_acquire);
    if (!isList(pushed)) {
        return;
    }
    DispatchTask* oldestFirst = nullptr;
    while (pushed != nullptr) {
        oldestFirst = std::exchange(pushed, std::exchange(pushed->next, oldestFirst));
    }
    DispatchTask** end = &backs;
    while (*end != nullptr) {
        end = &(*end)->next;
    }
    *end = oldestFirst;
}

}  // namespace korva::framework
