#include "framework/task_queue.h"

#include <iterator>

namespace korva::framework {

TaskQueue::Chunks::~Chunks() {
    while (TaskEntry* entry = next()) {
        entry->drop();
    }
}

TaskEntry& TaskQueue::Chunks::append() {
    if (last == nullptr || last->end == Chunk::places) {
        auto chunk = spare != nullptr ? std::move(spare) : std::make_unique<Chunk>();
        Chunk* const added = chunk.get();
        (last != nullptr ? last->next : first) = std::move(chunk);
        last = added;
    }
    return last->entries[last->end++];
}

// An emptied chunk stays first until it is asked for more. One is kept: it is the next to be filled.
TaskEntry* TaskQueue::Chunks::next() {
    while (first != nullptr && first->begin == first->end) {
        std::unique_ptr<Chunk> emptied = std::move(first);
        first = std::move(emptied->next);
        if (first == nullptr) {
            last = nullptr;
        }
        emptied->begin = 0;
        emptied->end = 0;
        spare = std::move(emptied);
    }
    return first == nullptr ? nullptr : &first->entries[first->begin++];
}

TaskQueue::~TaskQueue() = default;

bool TaskQueue::push(Ref<DispatchTask> task) {
    if (task->place() == DispatchTask::Place::back) {
        return push([task = std::move(task)] { task->run(); });
    }
    bool accepted = false;
    pushedCount.update([&](std::uint32_t& count) {
        if (!isClosed) {
            pushedFronts.push_back(std::move(task));
            hasPushedFronts.store(true, std::memory_order_release);
            ++count;
            accepted = true;
        }
    });
    return accepted;
}

bool TaskQueue::runNext() {
    if (hasPushedFronts.load(std::memory_order_acquire)) {
        takeFronts();
    }
    if (!fronts.empty()) {
        const Ref<DispatchTask> task = std::move(fronts.back());
        fronts.pop_back();
        task->run();
        return true;
    }
    if (taken.isEmpty()) {
        take();
    }
    TaskEntry* const entry = taken.next();
    if (entry == nullptr) {
        return false;
    }
    entry->run();
    return true;
}

// What was taken before is empty, and is what is pushed to next; looking for more makes its chunk the spare.
void TaskQueue::take() {
    static_cast<void>(taken.next());
    pushedCount.update([this](std::uint32_t& count) {
        std::swap(taken.first, pushed.first);
        std::swap(taken.last, pushed.last);
        std::swap(taken.spare, pushed.spare);
        count = static_cast<std::uint32_t>(pushedFronts.size());
    });
}

void TaskQueue::takeFronts() {
    pushedCount.update([this](std::uint32_t& count) {
        fronts.insert(fronts.end(), std::make_move_iterator(pushedFronts.begin()),
                      std::make_move_iterator(pushedFronts.end()));
        count -= static_cast<std::uint32_t>(pushedFronts.size());
        pushedFronts.clear();
        hasPushedFronts.store(false, std::memory_order_relaxed);
    });
}

void TaskQueue::close() {
    pushedCount.update([this](std::uint32_t&) { isClosed = true; });
}

}  // namespace korva::framework
