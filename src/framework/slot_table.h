// The pool of an object's list nodes.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace korva::framework {

/// A node's place in its table: its index times 64. 0 is no node.
using SlotHandle = std::uint32_t;

/// Nodes by 32-bit handles, in one array that grows: hundreds of values of one object keep their listeners
/// here, and a value without listeners costs nothing. `Limit` is the greatest number of nodes.
/// [the owner's thread]
///
/// Invariants:
///   1. `freeIndices[used ..]` are the indices that are free, the next one first;
///   2. index 0 is used from the beginning, so handle 0 means none;
///   3. a reference to a node is good until the next `allocate`, which may move them all.
template <class Node, std::uint32_t Limit = 0x3FFFFFF>
class SlotTable {
public:
    /// Takes memory with its first node: most objects have a table that they never use.
    explicit SlotTable(std::uint32_t initialCapacity = 4)
        : smallest(std::max<std::uint32_t>(initialCapacity, 2)) {}

    /// A cleared node; 0 if there are too many.
    [[nodiscard]] SlotHandle allocate() {
        if (used == Limit) {
            return 0;
        }
        if (entries.empty()) {
            grow(smallest);
        }
        const std::uint32_t index = freeIndices[used];
        if (used + 1 == capacity()) {
            grow(std::min(2 * capacity(), Limit));
        }
        ++used;
        entries[index] = Node{};
        return index << indexShift;
    }

    void free(SlotHandle handle) noexcept { freeIndices[--used] = handle >> indexShift; }

    /// A handle that the table has never had gives a node of zeros.
    [[nodiscard]] const Node& operator[](SlotHandle handle) const noexcept {
        const std::uint32_t index = handle >> indexShift;
        return index < entries.size() ? entries[index] : dummy;
    }

    /// The same for a handle that is known to be a node's: those in a list are.
    [[nodiscard]] const Node& known(SlotHandle handle) const noexcept {
        return entries[handle >> indexShift];
    }

    /// The node to be changed; null where there is none.
    [[nodiscard]] Node* find(SlotHandle handle) noexcept {
        const std::uint32_t index = handle >> indexShift;
        return isNode(handle) && index < entries.size() ? &entries[index] : nullptr;
    }

    [[nodiscard]] static constexpr bool isNode(SlotHandle handle) noexcept {
        return handle >> indexShift != 0;
    }

    /// Both count the reserved one; the capacity is 0 before the first node.
    [[nodiscard]] std::uint32_t usedCount() const noexcept { return used; }
    [[nodiscard]] std::uint32_t capacity() const noexcept {
        return static_cast<std::uint32_t>(entries.size());
    }

private:
    static constexpr std::uint32_t indexShift = 6;
    static constexpr Node dummy{};

    void grow(std::uint32_t larger) {
        const std::uint32_t first = capacity();
        freeIndices.reserve(larger);
        entries.reserve(larger);  // from here on nothing can fail
        freeIndices.resize(larger);
        entries.resize(larger);
        for (std::uint32_t index = first; index < larger; ++index) {
            freeIndices[index] = index;
        }
    }

    std::uint32_t used = 1;
    std::uint32_t smallest;
    std::vector<std::uint32_t> freeIndices;
    std::vector<Node> entries;
};

}  // namespace korva::framework
