#include "framework/observable_base.h"

#include "framework/active_object.h"

namespace korva::framework {

ActiveObject& ListenedTo::ownerObject() const noexcept {
    return static_cast<ActiveObject&>(owner());
}

std::uint32_t ObservableBase::begin(const void* incoming) {
    if (state == State::propagating) {
        // A propagator replaces the value: all of them see the new one, and the walk that called it ends.
        if (!pendingEquals(incoming)) {
            state = State::replacing;
            storePending(incoming);
            runPropagators();
        }
        return done;
    }
    if (state == State::committed) {
        finish();
    }
    if (state != State::idle && state != State::propagated) {
        return done;
    }
    // The pending value, not the published one: a change that was begun and never committed counts.
    if (pendingEquals(incoming)) {
        return equal;
    }
    state = State::propagating;
    storePending(incoming);
    runPropagators();
    state = State::propagated;
    changed = !pendingEqualsPublished();
    return done;
}

void ObservableBase::commit() {
    if (state != State::propagated) {
        return;
    }
    if (changed) {
        runBefore(addresses());
        publish();
    }
    state = State::committed;
}

void ObservableBase::finish() {
    if (state == State::before || state == State::after) {
        return;
    }
    if (state == State::committed && changed) {
        runAfter(addresses());
    }
    state = State::idle;
}

std::uint32_t ObservableBase::change(const void* incoming) {
    const std::uint32_t result = begin(incoming);
    commit();
    finish();
    return result;
}

void ObservableBase::commitChange() {
    owner().onOwner<bool>([this] {
        commit();
        return true;
    });
}

void ObservableBase::finishChange() {
    owner().onOwner<bool>([this] {
        finish();
        return true;
    });
}

void ObservableBase::ownerTold() {
    ownerObject().onValueChanging(*this);
}

void ObservableBase::runPropagators() {
    tellOwner();
    propagators.restart();
    runRestOfPropagators();
}

void ObservableBase::runRestOfPropagators() {
    if (!propagators.isWalking()) {
        return;
    }
    const Addresses at = addresses();
    ActiveObject& object = ownerObject();
    const SlotTable<PropagatorNode>& slots = propagatorSlots();
    while (const PropagatorNode* node = propagators.advance(slots)) {
        if (node->function != nullptr) {
            node->function(node->context, *this, object, at.published, at.pending, at.defaultValue,
                           Reason::change);
        }
    }
}

void ObservableBase::runSubscribers(ListenerFunction SubscriberNode::*function, const Addresses& at) {
    subscribers.restart();
    runRestOfSubscribers(function, at);
}

void ObservableBase::runRestOfSubscribers(ListenerFunction SubscriberNode::*function, const Addresses& at) {
    ActiveObject& object = ownerObject();
    const SlotTable<SubscriberNode>& slots = subscriberSlots();
    while (const SubscriberNode* node = subscribers.advance(slots)) {
        if (const ListenerFunction listener = node->*function) {
            listener(node->context, *this, object, at.published, at.pending, at.defaultValue, Reason::change);
        }
    }
}

// Whoever comes or goes during a walk does so after all the others were served.
void ObservableBase::completeSubscribers() {
    if (subscribers.isWalking()) {
        runRestOfSubscribers(
            state == State::before ? &SubscriberNode::beforeFunction : &SubscriberNode::afterFunction,
            addresses());
    }
}

void ObservableBase::callNow(void* context, ListenerFunction function, Reason reason) {
    if (function != nullptr) {
        const Addresses at = addresses();
        function(context, *this, ownerObject(), at.published, const_cast<void*>(at.published),
                 at.defaultValue, reason);
    }
}

SlotHandle ObservableBase::addPropagator(void* context, ListenerFunction function, Position position,
                                         bool callAtOnce) {
    return owner().onOwner<SlotHandle>([&] {
        runRestOfPropagators();
        const SlotHandle handle = propagators.add(propagatorSlots(), {context, function}, position);
        if (handle != 0) {
            ownerObject().onPropagatorAdded(*this, context, function, position);
            if (callAtOnce) {
                callNow(context, function, Reason::subscribed);
            }
        }
        return handle;
    });
}

void ObservableBase::removePropagator(void* context, ListenerFunction function) {
    owner().onOwner<bool>([&] {
        runRestOfPropagators();
        const SlotHandle handle = propagators.findLast(propagatorSlots(), [&](const PropagatorNode& node) {
            return node.function == function && (context == nullptr || node.context == context);
        });
        if (handle != 0) {
            propagators.remove(propagatorSlots(), handle);
            ownerObject().onPropagatorRemoved(*this, context, function);
        }
        return true;
    });
}

SlotHandle ObservableBase::subscribe(void* context, ListenerFunction before, ListenerFunction after,
                                     Position position, bool callBeforeNow, bool callAfterNow) {
    return owner().onOwner<SlotHandle>([&] {
        completeSubscribers();
        const SlotHandle handle = subscribers.add(subscriberSlots(), {context, before, after}, position);
        if (handle != 0) {
            hasBeforeFunctions = hasBeforeFunctions || before != nullptr;
            ownerObject().onSubscriberAdded(*this, context, after, position);
            if (callBeforeNow) {
                callNow(context, before, Reason::subscribed);
            }
            if (callAfterNow) {
                callNow(context, after, Reason::subscribed);
            }
        }
        return handle;
    });
}

void ObservableBase::unsubscribe(void* context, ListenerFunction before, ListenerFunction after,
                                 bool callBeforeNow, bool callAfterNow) {
    owner().onOwner<bool>([&] {
        completeSubscribers();
        const SlotHandle handle = findSubscriber(subscribers, subscriberSlots(), context, before, after);
        if (handle == 0) {
            return false;
        }
        subscribers.remove(subscriberSlots(), handle);
        ownerObject().onSubscriberRemoved(*this, context, after);
        if (callAfterNow && state != State::after) {
            callNow(context, after, Reason::removed);
        }
        if (callBeforeNow && state != State::before && state != State::committed) {
            callNow(context, before, Reason::removed);
        }
        return true;
    });
}

}  // namespace korva::framework
