// The lists of listeners that a value keeps in its owner's tables.
#pragma once

#include <cstdint>

#include "framework/slot_table.h"

namespace korva::framework {

class ActiveObject;
class ListenedTo;  // see listened_to.h

/// Why a listener is called.
enum class Reason : std::uint32_t {
    change = 0,      ///< The value changes.
    subscribed = 1,  ///< It has just been subscribed; both values are the published one.
    removed = 2,     ///< It has just been removed; both values are the published one.
    added = 3,       ///< An element joins a collection, or the listener joins and the element is there.
    left = 4,        ///< An element leaves a collection, or the listener leaves and the element stays.
};

/// Every listener of every value: `context` is whatever the subscriber gave. `published` and `pending` point
/// at the value before and after the change, `defaultValue` at its reset value; a collection gives the
/// element itself as both, and null as the default. A propagator may write to `pending`.
using ListenerFunction = void (*)(void* context, ListenedTo& source, ActiveObject& owner,
                                  const void* published, void* pending, const void* defaultValue,
                                  Reason reason);

/// Where a new listener enters its list.
enum class Position : std::uint32_t {
    last = 0,
    first = 1,
    beforeLast = 2,  ///< Directly before the one that is last at present.
    afterFirst = 3,  ///< Directly after the one that is first at present.
};

struct PropagatorNode {
    void* context = nullptr;
    ListenerFunction function = nullptr;
    SlotHandle previous = 0;
    SlotHandle next = 0;
};

struct SubscriberNode {
    void* context = nullptr;
    ListenerFunction beforeFunction = nullptr;
    ListenerFunction afterFunction = nullptr;
    SlotHandle previous = 0;
    SlotHandle next = 0;
};

/// A list of nodes of one table, and a cursor for the walk that runs. The table is the owner's, and is given
/// to each operation, so that a list is three handles.  [the owner's thread]
template <class Node>
class ListenerList {
public:
    using Table = SlotTable<Node>;

    [[nodiscard]] bool isEmpty() const noexcept { return head == 0; }
    [[nodiscard]] bool isWalking() const noexcept { return cursor != 0; }

    /// Adds a node like `listener`; 0 if the table is full.
    SlotHandle add(Table& table, const Node& listener, Position position) {
        const SlotHandle handle = table.allocate();
        if (handle != 0) {
            *table.find(handle) = listener;
            linkBefore(table, handle, nextOf(table, position));
        }
        return handle;
    }

    /// Takes a node out and frees it; a walk that would have come to it goes on behind it.
    void remove(Table& table, SlotHandle handle) {
        const Node node = table[handle];
        setNext(table, node.previous, node.next);
        setPrevious(table, node.next, node.previous);
        if (cursor == handle) {
            cursor = node.next;
        }
        table.free(handle);
    }

    /// The last node that `matches`; 0 if there is none.
    template <class Matches>
    [[nodiscard]] SlotHandle findLast(const Table& table, const Matches& matches) const {
        for (SlotHandle handle = tail; Table::isNode(handle); handle = table[handle].previous) {
            if (matches(table[handle])) {
                return handle;
            }
        }
        return 0;
    }

    /// Begins a walk: the cursor stands at the first node.
    void restart() noexcept { cursor = head; }

    /// The node that the walk comes to, or null at its end. The cursor is ahead of it, and it is good until
    /// the table changes: whoever calls its function, which may add and remove listeners, has read it before.
    [[nodiscard]] const Node* advance(const Table& table) noexcept {
        if (cursor == 0) {
            return nullptr;
        }
        const Node& node = table.known(cursor);
        cursor = node.next;
        return &node;
    }

private:
    // The node that a new one will stand before; 0 at the end.
    [[nodiscard]] SlotHandle nextOf(const Table& table, Position position) const {
        switch (position) {
            case Position::first:
                return head;
            case Position::beforeLast:
                return tail;
            case Position::afterFirst:
                return table[head].next;
            case Position::last:
                break;
        }
        return 0;
    }

    void linkBefore(Table& table, SlotHandle handle, SlotHandle next) {
        const SlotHandle previous = Table::isNode(next) ? table[next].previous : tail;
        Node* node = table.find(handle);
        node->previous = previous;
        node->next = next;
        setNext(table, previous, handle);
        setPrevious(table, next, handle);
    }

    void setNext(Table& table, SlotHandle handle, SlotHandle next) {
        if (Node* node = table.find(handle)) {
            node->next = next;
        } else {
            head = next;
        }
    }

    void setPrevious(Table& table, SlotHandle handle, SlotHandle previous) {
        if (Node* node = table.find(handle)) {
            node->previous = previous;
        } else {
            tail = previous;
        }
    }

    SlotHandle head = 0;
    SlotHandle cursor = 0;
    SlotHandle tail = 0;
};

/// The last subscriber that has the before function or, if none does, the after function; a null context
/// matches any. A null function matches none: every listener without that function would be taken for the one
/// meant. 0 if there is none.
[[nodiscard]] SlotHandle findSubscriber(const ListenerList<SubscriberNode>& list,
                                        const SlotTable<SubscriberNode>& table, void* context,
                                        ListenerFunction before, ListenerFunction after);

}  // namespace korva::framework
