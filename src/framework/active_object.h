// Objects with an owner thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "framework/dispatcher.h"
#include "framework/object_class.h"
#include "framework/observable.h"
#include "framework/observable_owner.h"
#include "framework/ref.h"
#include "framework/waitable_counter.h"

namespace korva::framework {

/// An object whose code runs on one thread, the one that made it: that thread's dispatcher takes calls and
/// tasks of all others, so the object needs no lock. Its life: `create`, use, `close`, the last `Release`.
///
/// Closing is the orderly end: `onClose` lets go of subscriptions, interfaces and children, while references
/// to the object may remain. Each `holdClose` makes one `close` go by without effect. The last `Release`
/// closes whatever holds are left, and may come from any thread: the destructor runs on the owner's thread.
///
/// Made on a thread without a dispatcher, an object is of use on that thread only: operations from others do
/// nothing, and a last `Release` from another leaves the memory allocated.
class ActiveObject : public ObjectClass<ActiveObject, ObjectBase>, public ObservableOwner {
public:
    static void describeMembers(ClassInfo& info);

    /// Asks for the orderly end: on the owner's thread it comes at once, from any other by a task that keeps
    /// the object alive.  [any]
    virtual void close();

    /// One more `close` is needed. Gives the number of holds.  [any]
    virtual std::int32_t holdClose();

    /// 1 once the object has begun to close, and once it is destroyed: for whoever works on its behalf. They
    /// outlive the object.  [any]
    [[nodiscard]] const Ref<WaitableCounter>& closedCounter() const noexcept { return closed; }
    [[nodiscard]] const Ref<WaitableCounter>& destroyedCounter() const noexcept { return destroyed; }

    /// Runs `callable` on the owner's thread and waits for it. False, with nothing run, if the dispatcher has
    /// stopped or there is none.  [any, blocks]
    template <class Callable>
    bool runOnOwner(Callable&& callable) {
        return onOwner<bool>([&callable] {
            callable();
            return true;
        });
    }

    /// `Dispatcher::post` and its sisters on the object's dispatcher. The callable is not given the object:
    /// it holds a weak reference to it, or a counted one if the task must run. Empty without a dispatcher.
    /// [any]
    template <class Callable>
    [[nodiscard]] TaskHandle postTask(Callable&& callable, Ref<WaitableCounter> cancelCounter = {},
                                      DispatchTask::Place place = DispatchTask::Place::back) {
        const Ref<Dispatcher> target = dispatcherRef();
        return target == nullptr
                   ? TaskHandle()
                   : target->post(std::forward<Callable>(callable), std::move(cancelCounter), place);
    }

    template <class Callable>
    void postAndForget(Callable&& callable) {
        if (const Ref<Dispatcher> target = dispatcherRef()) {
            target->postAndForget(std::forward<Callable>(callable));
        }
    }
    template <class Callable>
    void postAndForget(Callable&& callable, Ref<WaitableCounter> cancelCounter,
                       DispatchTask::Place place = DispatchTask::Place::back) {
        if (const Ref<Dispatcher> target = dispatcherRef()) {
            target->postAndForget(std::forward<Callable>(callable), std::move(cancelCounter), place);
        }
    }

    template <class Callable>
    [[nodiscard]] TaskHandle postDelayed(std::int64_t delayMs, Callable&& callable,
                                         Ref<WaitableCounter> cancelCounter = {},
                                         DispatchTask::Place place = DispatchTask::Place::back) {
        const Ref<Dispatcher> target = dispatcherRef();
        return target == nullptr ? TaskHandle()
                                 : target->postDelayed(delayMs, std::forward<Callable>(callable),
                                                       std::move(cancelCounter), place);
    }

    /// The thread was started for this object: its use goes with the object.  [owner]
    void ownDispatcher(DispatcherUse use) noexcept { ownedDispatcher = std::move(use); }

    /// True from the end of this class's constructor until `onClose` has come to this class.
    Observable<bool> isAlive{*this};

protected:
    ActiveObject();
    ~ActiveObject() override;

    /// The orderly end, once: derived classes drop what they hold and call their base's at last.  [owner]
    virtual void onClose();

    void destroy() override;

    /// One of the object's values that tell it (`tellsOwner`) begins to change: the incoming value is
    /// pending, and may be replaced by setting the value anew.  [owner]
    virtual void onValueChanging(ObservableBase& value);

    /// Hooks: a listener of one of the object's values has come or gone.  [owner]
    virtual void onPropagatorRemoved(ListenedTo& observable, void* context, ListenerFunction function);
    virtual void onPropagatorAdded(ListenedTo& observable, void* context, ListenerFunction function,
                                   Position position);
    virtual void onSubscriberRemoved(ListenedTo& observable, void* context, ListenerFunction afterFunction);
    virtual void onSubscriberAdded(ListenedTo& observable, void* context, ListenerFunction afterFunction,
                                   Position position);

private:
    friend class ObservableBase;

    bool takeHold() noexcept;
    void closeUnlessHeld();
    void closeNow();
    void resetMembers();
    void destroyHere();

    DispatcherUse ownedDispatcher;
    const Ref<WaitableCounter> closed = Ref<WaitableCounter>::adopt(new WaitableCounter);
    const Ref<WaitableCounter> destroyed = Ref<WaitableCounter>::adopt(new WaitableCounter);
    std::atomic<std::int32_t> closeHolds{0};
};

}  // namespace korva::framework
