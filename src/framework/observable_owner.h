// What a value needs of the object that it lives in.
#pragma once

#include <cstdint>

#include "framework/dispatcher.h"
#include "framework/listener_list.h"
#include "framework/ref.h"
#include "framework/slot_table.h"
#include "framework/thread_number.h"

namespace korva::framework {

/// The owner's thread, and the nodes of all its values' listeners. A base of `ActiveObject`.
class ObservableOwner {
public:
    ObservableOwner(const ObservableOwner&) = delete;
    ObservableOwner& operator=(const ObservableOwner&) = delete;

    [[nodiscard]] bool isOwnerThread() const noexcept { return ownerThread == currentThreadNumber(); }

    /// The dispatcher of the thread that made the object; null if that thread had none.
    [[nodiscard]] Dispatcher* dispatcher() const noexcept { return ownerDispatcher.get(); }

    /// The rule of every operation on an object's values: runs `operation` on the owner's thread, at once if
    /// that is the calling thread, and gives its result. Without a dispatcher, or with one that has stopped,
    /// nothing is done and the result is `Result{}`.  [any, blocks]
    template <class Result, class Operation>
    Result onOwner(const Operation& operation) const {
        if (isOwnerThread()) {
            return operation();
        }
        Result result{};
        if (ownerDispatcher) {
            ownerDispatcher->runSynchronously([&] { result = operation(); });
        }
        return result;
    }

protected:
    ObservableOwner() : ownerDispatcher(Ref<Dispatcher>::share(Dispatcher::current())) {}
    ~ObservableOwner() = default;

    const Ref<Dispatcher>& dispatcherRef() const noexcept { return ownerDispatcher; }

private:
    friend class ListenedTo;

    SlotTable<PropagatorNode> propagatorSlots;
    SlotTable<SubscriberNode> subscriberSlots;
    Ref<Dispatcher> ownerDispatcher;
    const std::uint32_t ownerThread = currentThreadNumber();
};

}  // namespace korva::framework
