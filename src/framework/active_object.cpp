#include "framework/active_object.h"

#include "framework/describe_members.h"

namespace korva::framework {

// Its thread's callers may reach the object before its constructor has ended, by weak references: `create`
// lets them in.
ActiveObject::ActiveObject() {
    if (dispatcher() != nullptr) {
        beginBuilding();
    }
    isAlive.set(true);
}

ActiveObject::~ActiveObject() {
    ownedDispatcher = {};
    destroyed->set(1);
}

void ActiveObject::describeMembers(ClassInfo& info) {
    describe(info, "isAlive", &ActiveObject::isAlive);
}

void ActiveObject::close() {
    if (isOwnerThread()) {
        closeUnlessHeld();
    } else {
        postAndForget([self = Ref<ActiveObject>::share(this)] { self->closeUnlessHeld(); });
    }
}

std::int32_t ActiveObject::holdClose() {
    return closeHolds.fetch_add(1) + 1;
}

// False if there is none.
bool ActiveObject::takeHold() noexcept {
    std::int32_t holds = closeHolds.load();
    while (holds > 0) {
        if (closeHolds.compare_exchange_weak(holds, holds - 1)) {
            return true;
        }
    }
    return false;
}

// N holds let N calls go by: the creator's share is the one without a hold.
void ActiveObject::closeUnlessHeld() {
    if (!takeHold()) {
        closeNow();
    }
}

void ActiveObject::closeNow() {
    if (closed->get() != 0) {
        return;
    }
    closed->set(1);
    if (!hasReferences()) {
        onClose();
        return;
    }
    // `onClose` may drop what is the last reference but this one: nothing of the object is touched after it.
    const auto self = Ref<ActiveObject>::share(this);
    onClose();
    resetMembers();
}

void ActiveObject::resetMembers() {
    const std::shared_ptr<const ClassInfo> info = getClassInfo();
    for (const ClassInfo::Member& member : info->resetAtClose) {
        member->reset(*this);
    }
    for (const ClassInfo::Member& member : info->resetCollectionsAtClose) {
        member->reset(*this);
    }
}

void ActiveObject::onClose() {
    isAlive.set(false);
}

// The task has no reference, since there is none left to give: the object may be gone, and its thread with
// it, before the post comes back. A dispatcher that has stopped drops it, and the object stays: whoever stops
// a thread lets go of its objects first.
void ActiveObject::destroy() {
    if (isOwnerThread()) {
        destroyHere();
    } else {
        postAndForget([this] { destroyHere(); });
    }
}

// Nobody is left who could close it once for each hold.
void ActiveObject::destroyHere() {
    closeNow();
    delete this;
}

void ActiveObject::onValueChanging(ObservableBase&) {}

void ActiveObject::onPropagatorRemoved(ListenedTo&, void*, ListenerFunction) {}

void ActiveObject::onPropagatorAdded(ListenedTo&, void*, ListenerFunction, Position) {}

void ActiveObject::onSubscriberRemoved(ListenedTo&, void*, ListenerFunction) {}

void ActiveObject::onSubscriberAdded(ListenedTo&, void*, ListenerFunction, Position) {}

}  // namespace korva::framework
