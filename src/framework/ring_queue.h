// The calls that wait for a dispatcher.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "framework/waitable_counter.h"

namespace korva::framework {

/// A queue of pointers whose length can be waited for. It owns nothing. Once closed it takes no more entries;
/// those that it has stay.  [any]
///
/// Invariants, under the mutex of `pending`:
///   1. `pending` counts the entries in the queue and those that were popped and have not been finished;
///   2. `ring` has a power of two places, `length` or more.
template <class Entry>
class RingQueue {
public:
    struct Pushed {
        bool accepted = false;
        std::uint32_t pending = 0;
    };

    struct Popped {
        bool found = false;
        Entry* entry = nullptr;     ///< May be null: a null entry only wakes.
        std::uint32_t pending = 0;  ///< The count at that moment, the popped entry included.
    };

    RingQueue() : ring(initialPlaces) {}

    Pushed push(Entry* entry) {
        bool accepted = false;
        const std::uint32_t count = pending.update([&](std::uint32_t& entries) {
            if (!closed) {
                growIfFull();
                ring[placeOf(length)] = entry;
                ++length;
                ++entries;
                accepted = true;
            }
        });
        return {accepted, count};
    }

    /// Takes the first entry out; it counts as pending until `finish`.
    Popped pop() {
        return pending.locked([this](std::uint32_t count) {
            if (length == 0) {
                return Popped{false, nullptr, count};
            }
            Entry* entry = ring[head];
            head = placeOf(1);
            --length;
            return Popped{true, entry, count};
        });
    }

    /// A popped entry is done with. Gives the new count.
    std::uint32_t finish() { return pending.subtract(1); }

    void close() {
        pending.locked([this](std::uint32_t) { closed = true; });
    }

    /// Entries waiting and running.
    [[nodiscard]] WaitableCounter& count() noexcept { return pending; }

private:
    static constexpr std::size_t initialPlaces = 16;

    [[nodiscard]] std::size_t placeOf(std::size_t position) const noexcept {
        return (head + position) & (ring.size() - 1);
    }

    void growIfFull() {
        if (length < ring.size()) {
            return;
        }
        std::vector<Entry*> larger(2 * ring.size());
        for (std::size_t i = 0; i < length; ++i) {
            larger[i] = ring[placeOf(i)];
        }
        ring.swap(larger);
        head = 0;
    }

    WaitableCounter pending;
    std::vector<Entry*> ring;
    std::size_t head = 0;
    std::size_t length = 0;
    bool closed = false;
};

}  // namespace korva::framework
