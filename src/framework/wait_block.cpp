#include "framework/wait_block.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>
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

bool WaitBlock::offer(const WaitRegistration& registration, std::uint32_t value) {
    if (!registration.endsAt(value)) {
        return false;
    }
    const std::lock_guard guard(mutex);
    if (index >= 0) {
        return false;
    }
    registration.markSeen(value);
    index = registration.index;
    return true;
}

bool WaitBlock::isSignalled() {
    const std::lock_guard guard(mutex);
    return index >= 0;
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
    if (handles.size() > maxHandles) {
        throw std::invalid_argument("waiting for handles: too many");
    }
    std::array<platform::WaitHandle, platform::maxWaitHandles> all{};
    std::copy(handles.begin(), handles.end(), all.begin());
    all[handles.size()] = event->handle();
    const auto own = static_cast<int>(handles.size());
    while (true) {
        // A counter that had changed as the wait began signalled the block and woke nobody.
        const std::int64_t limitMs = isSignalled() ? 0 : limit.sliceMs(waitForever);
        const int signalled = platform::waitForHandles({all.data(), handles.size() + 1}, limitMs);
        if (signalled != own) {
            return signalled;
        }
        // It may have been a late wake for the block's last user. Reset first: a later signal sets it again.
        event->reset();
        if (isSignalled()) {
            return -1;
        }
    }
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
            auto list = std::make_unique<std::vector<Block*>>();
            blocks = new Blocks;
            unused = list.release();
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

constinit std::atomic<std::uint32_t> lateWakes{0};

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

LateWakes::LateWakes() noexcept {
    lateWakes.fetch_add(1);
}

LateWakes::~LateWakes() {
    lateWakes.fetch_sub(1);
}

// A late wake is a few instructions from its end.
void freeUnusedWaitBlocks() {
    while (lateWakes.load() != 0) {
        std::this_thread::yield();
    }
    conditionBlocks.freeIfUnused();
    eventBlocks.freeIfUnused();
}

}  // namespace korva::framework
