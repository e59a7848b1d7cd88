#include "framework/wait_block.h"

#include <algorithm>
#include <array>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace korva::framework {

namespace {

// No longer at a time, so that no clock arithmetic of a standard library can overflow. Without a limit, too:
// a thread that wakes once a day costs nothing.
constexpr std::int64_t longestSliceMs = 86'400'000;

}  // namespace

void WaitBlock::reset() {
    const std::lock_guard guard(mutex);
    index = -1;
}

void WaitBlock::offer(const WaitRegistration& registration, std::uint32_t value) {
    {
        const std::lock_guard guard(mutex);
        if (index >= 0 || !registration.endsAt(value)) {
            return;
        }
        registration.markSeen(value);
        index = registration.index;
    }
    // Outside the block's mutex, so that the woken thread doesn't run into it. It can't leave the wait, and
    // with it the block, before it had the counter's mutex, which the caller holds.
    wake();
}

int WaitBlock::signalledIndex() {
    const std::lock_guard guard(mutex);
    return index;
}

void ConditionBlock::sleep(const WaitLimit& limit) {
    std::unique_lock guard(mutex);
    while (index < 0) {
        const std::int64_t slice = limit.sliceMs(longestSliceMs);
        if (slice == 0) {
            return;
        }
        signalled.waitFor(guard, slice);
    }
}

void EventBlock::reset() {
    WaitBlock::reset();
    if (event) {
        event->reset();
    } else {
        event.emplace();
    }
}

int EventBlock::sleep(std::span<const platform::WaitHandle> handles, const WaitLimit& limit) {
    std::array<platform::WaitHandle, platform::maxWaitHandles> all{};
    std::copy(handles.begin(), handles.end(), all.begin());
    all[handles.size()] = event->handle();
    const int signalled =
        platform::waitForHandles({all.data(), handles.size() + 1}, limit.sliceMs(waitForever));
    return signalled == static_cast<int>(handles.size()) ? -1 : signalled;
}

namespace {

// The blocks of one kind. It has no destructor: at a process's end threads may still sleep on its blocks.
template <class Block>
class BlockPool {
public:
    Block* take() {
        const std::lock_guard guard(mutex);
        if (unused == nullptr || unused->empty()) {
            grow();
        }
        Block* block = unused->back();
        unused->pop_back();
        return block;
    }

    void giveBack(Block* block) noexcept {
        const std::lock_guard guard(mutex);
        unused->push_back(block);  // has room for all of them
    }

    WaitBlockCounts counts() {
        const std::lock_guard guard(mutex);
        if (blocks == nullptr) {
            return {};
        }
        return {blocks->size(), blocks->size() - unused->size()};
    }

    void freeIfUnused() {
        const std::lock_guard guard(mutex);
        if (blocks != nullptr && unused->size() == blocks->size()) {
            delete std::exchange(unused, nullptr);
            delete std::exchange(blocks, nullptr);
        }
    }

private:
    static constexpr std::size_t initialCount = 16;

    using Blocks = std::vector<std::unique_ptr<Block>>;

    void grow() {
        if (blocks == nullptr) {
            blocks = new Blocks;
            unused = new std::vector<Block*>;
        }
        const std::size_t count = blocks->empty() ? initialCount : 2 * blocks->size();
        blocks->reserve(count);
        unused->reserve(count);
        while (blocks->size() < count) {
            blocks->push_back(std::make_unique<Block>());
            unused->push_back(blocks->back().get());
        }
    }

    platform::Mutex mutex;
    Blocks* blocks = nullptr;
    std::vector<Block*>* unused = nullptr;
};

constinit BlockPool<ConditionBlock> conditionBlocks;
constinit BlockPool<EventBlock> eventBlocks;

template <class Block>
BlockPool<Block>& poolOf() noexcept {
    if constexpr (std::is_same_v<Block, ConditionBlock>) {
        return conditionBlocks;
    } else {
        return eventBlocks;
    }
}

}  // namespace

template <class Block>
PooledBlock<Block>::PooledBlock() : block(poolOf<Block>().take()) {
    try {
        block->reset();
    } catch (...) {
        poolOf<Block>().giveBack(block);
        throw;
    }
}

template <class Block>
PooledBlock<Block>::~PooledBlock() {
    poolOf<Block>().giveBack(block);
}

template class PooledBlock<ConditionBlock>;
template class PooledBlock<EventBlock>;

WaitBlockCounts waitBlockCounts() {
    const WaitBlockCounts conditions = conditionBlocks.counts();
    const WaitBlockCounts events = eventBlocks.counts();
    return {conditions.all + events.all, conditions.used + events.used};
}

void freeUnusedWaitBlocks() {
    conditionBlocks.freeIfUnused();
    eventBlocks.freeIfUnused();
}

}  // namespace korva::framework
