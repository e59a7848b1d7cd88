#include "framework/observable_collection.h"

#include <algorithm>
#include <utility>

#include "framework/describe_members.h"

namespace korva::framework {

SlotHandle ObservableCollection::Listeners::add(const SubscriberNode& listener, Position position) {
    walkRest();
    return list.add(subscriberSlots(), listener, position);
}

bool ObservableCollection::Listeners::remove(void* context, ListenerFunction before, ListenerFunction after) {
    walkRest();
    const SlotHandle handle = findSubscriber(list, subscriberSlots(), context, before, after);
    if (handle != 0) {
        list.remove(subscriberSlots(), handle);
    }
    return handle != 0;
}

void ObservableCollection::Listeners::tell(ListenerFunction SubscriberNode::*function, ActiveObject& told,
                                           Reason why) {
    phase = function;
    element = &told;
    reason = why;
    list.restart();
    walkRest();
}

void ObservableCollection::Listeners::walkRest() {
    while (const SubscriberNode* node = list.advance(subscriberSlots())) {
        if (const ListenerFunction function = node->*phase) {
            function(node->context, *this, ownerObject(), element, element, nullptr, reason);
        }
    }
}

void ObservableCollection::Listeners::tellAll(void* context, ListenerFunction function, Reason why) {
    if (function == nullptr) {
        return;
    }
    // A copy: the listener may change the collection.
    const std::vector<Element> present = static_cast<ObservableCollection&>(ownerObject()).held;
    for (const Element& each : present) {
        function(context, *this, ownerObject(), each.get(), each.get(), nullptr, why);
    }
}

void ObservableCollection::describeMembers(ClassInfo& info) {
    describe(info, "size", &ObservableCollection::size);
    describe(info, "order", &ObservableCollection::order);
    describe(info, "lastMove", &ObservableCollection::lastMove);
}

/// Refuses changes from inside a change.
class ObservableCollection::Changing {
public:
    explicit Changing(bool& changingFlag) noexcept : flag(changingFlag) { flag = true; }
    ~Changing() { flag = false; }
    Changing(const Changing&) = delete;
    Changing& operator=(const Changing&) = delete;

private:
    bool& flag;
};

template <class Change>
bool ObservableCollection::changeElements(ActiveObject& element, Reason reason, const Change& change) {
    const Changing guard(changing);
    listeners.tell(&SubscriberNode::beforeFunction, element, reason);
    change();
    size.set(static_cast<std::int32_t>(held.size()));
    order.set(order.value() + 1);
    listeners.tell(&SubscriberNode::afterFunction, element, reason);
    return true;
}

bool ObservableCollection::insert(Element element, std::size_t index) {
    return onOwner<bool>([&] { return insertHere(std::move(element), index); });
}

bool ObservableCollection::insertHere(Element&& element, std::size_t index) {
    const std::size_t place = index == atEnd ? held.size() : index;
    if (changing || !element || place > held.size()) {
        return false;
    }
    ActiveObject& inserted = *element;
    return changeElements(inserted, Reason::added, [&] {
        held.insert(held.begin() + static_cast<std::ptrdiff_t>(place), std::move(element));
    });
}

bool ObservableCollection::remove(const ActiveObject& element) {
    return onOwner<bool>([&] {
        const auto found = std::find_if(held.begin(), held.end(),
                                        [&](const Element& each) { return each.get() == &element; });
        return removeHere(static_cast<std::size_t>(found - held.begin()));
    });
}

bool ObservableCollection::removeAt(std::size_t index) {
    return onOwner<bool>([&] { return removeHere(index); });
}

bool ObservableCollection::removeHere(std::size_t index) {
    if (changing || index >= held.size()) {
        return false;
    }
    // Held until its listeners have been told that it went.
    const Element removed = held[index];
    return changeElements(*removed, Reason::left,
                          [&] { held.erase(held.begin() + static_cast<std::ptrdiff_t>(index)); });
}

bool ObservableCollection::move(std::size_t from, std::size_t to) {
    return onOwner<bool>([&] { return moveHere(from, to); });
}

bool ObservableCollection::moveHere(std::size_t from, std::size_t to) {
    if (changing || from >= held.size() || to >= held.size()) {
        return false;
    }
    if (from == to) {
        return true;
    }
    const auto at = [this](std::size_t index) { return held.begin() + static_cast<std::ptrdiff_t>(index); };
    const void* const moved = held[from].get();
    if (from < to) {
        std::rotate(at(from), at(from + 1), at(to + 1));
    } else {
        std::rotate(at(to), at(from), at(from + 1));
    }
    const Changing guard(changing);
    lastMove.set({moved, static_cast<std::int32_t>(from), static_cast<std::int32_t>(to)});
    order.set(order.value() + 1);
    return true;
}

bool ObservableCollection::clear() {
    return onOwner<bool>([this] {
        while (!held.empty()) {
            if (!removeHere(held.size() - 1)) {
                return false;
            }
        }
        return true;
    });
}

SlotHandle ObservableCollection::subscribe(void* context, ListenerFunction before, ListenerFunction after,
                                           Position position, bool callBeforeNow, bool callAfterNow) {
    return onOwner<SlotHandle>([&] {
        const SlotHandle handle = listeners.add({context, before, after}, position);
        if (handle != 0) {
            onSubscriberAdded(listeners, context, after, position);
            listeners.tellAll(context, callBeforeNow ? before : nullptr, Reason::added);
            listeners.tellAll(context, callAfterNow ? after : nullptr, Reason::added);
        }
        return handle;
    });
}

void ObservableCollection::unsubscribe(void* context, ListenerFunction before, ListenerFunction after,
                                       bool callBeforeNow, bool callAfterNow) {
    onOwner<bool>([&] {
        if (listeners.remove(context, before, after)) {
            onSubscriberRemoved(listeners, context, after);
            listeners.tellAll(context, callAfterNow ? after : nullptr, Reason::left);
            listeners.tellAll(context, callBeforeNow ? before : nullptr, Reason::left);
        }
        return true;
    });
}

// Told one by one, as with any other removal. What a walk that runs keeps from being removed here goes with
// the object.
void ObservableCollection::onClose() {
    clear();
    ActiveObject::onClose();
}

}  // namespace korva::framework
