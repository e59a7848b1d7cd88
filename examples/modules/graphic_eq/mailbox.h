// How the owner's thread hands values to the audio thread, without either waiting for the other.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

namespace equaliser {

/// Holds the newest value that was put in; those that nobody took in time are dropped. Of the three slots one
/// is the owner's to write, one the audio thread's to read, and the third changes hands: each side swaps its
/// own for it in one step.
template <class Value>
class Mailbox {
public:
    /// [owner]
    void put(const Value& value) {
        slots[written] = value;
        // Releases the value to `take`, and acquires the slot that `take` gave back.
        written = between.exchange(written | isNew, std::memory_order_acq_rel) & slotBits;
    }

    /// The newest value, until the next call; null if it was taken before.  [audio, rt]
    const Value* take() {
        if ((between.load(std::memory_order_relaxed) & isNew) == 0) {
            return nullptr;
        }
        read = between.exchange(read, std::memory_order_acq_rel) & slotBits;
        return &slots[read];
    }

private:
    static constexpr std::uint32_t slotBits = 3;
    static constexpr std::uint32_t isNew = 4;

    std::array<Value, 3> slots{};
    std::uint32_t written = 0;              ///< Owner.
    std::uint32_t read = 1;                 ///< Audio.
    std::atomic<std::uint32_t> between{2};  ///< Both: a slot, and whether its value is new.
};

}  // namespace equaliser
