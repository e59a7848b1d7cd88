#include "framework/dispatcher_registry.h"

#include "framework/dispatcher.h"

namespace korva::framework {

namespace {

constinit DispatcherRegistry processRegistry;

}  // namespace

DispatcherRegistry& dispatcherRegistry() noexcept {
    return processRegistry;
}

void DispatcherRegistry::add(Dispatcher& dispatcher) noexcept {
    const std::lock_guard guard(mutex);
    dispatcher.isRegistered = true;
    dispatcher.nextRegistered = first;
    if (first != nullptr) {
        first->previousRegistered = &dispatcher;
    }
    first = &dispatcher;
}

void DispatcherRegistry::remove(Dispatcher& dispatcher) noexcept {
    const std::lock_guard guard(mutex);
    if (!dispatcher.isRegistered) {
        return;
    }
    dispatcher.isRegistered = false;
    Dispatcher* const previous = dispatcher.previousRegistered;
    Dispatcher* const next = dispatcher.nextRegistered;
    (previous != nullptr ? previous->nextRegistered : first) = next;
    if (next != nullptr) {
        next->previousRegistered = previous;
    }
}

// A dispatcher whose last reference is gone waits in its destructor for this mutex, and must not be given a
// new one.
std::vector<Ref<Dispatcher>> DispatcherRegistry::all() {
    const std::lock_guard guard(mutex);
    std::vector<Ref<Dispatcher>> alive;
    for (Dispatcher* dispatcher = first; dispatcher != nullptr; dispatcher = dispatcher->nextRegistered) {
        if (Ref<Dispatcher> reference = ObjectBase::shareIfAlive(*dispatcher)) {
            alive.push_back(std::move(reference));
        }
    }
    return alive;
}

}  // namespace korva::framework
