// How a value changes, whatever its type.
#pragma once

#include <cstdint>

#include "framework/listened_to.h"

namespace korva::framework {

/// Says of a value that its object is told of each change as it begins (`ActiveObject::onValueChanging`): for
/// what an object derives from its own values, at no cost of memory.
struct TellsOwner {};
inline constexpr TellsOwner tellsOwner{};

/// The state machine of an `Observable<T>`: its two lists of listeners, and the three phases of a change.
///
///   beginChange    idle -> propagating -> propagated: the incoming value becomes pending; propagators run,
///                  begin the change of the values derived from it, or replace it;
///   commitChange   propagated -> before -> committed: before functions run, then the value is published;
///   finishChange   committed -> after -> idle: after functions run.
///
/// Re-entry: a value can't be changed from its own before and after functions, nor a third time from its
/// propagators; such an attempt is dropped. A listener that comes or goes during a walk does so after the
/// rest of that walk, which is then run at once. What a listener raises passes through, and the value stays
/// in the middle of its change, where the next one is lost: listeners of the system don't raise.
///
/// Whoever makes a change keeps the owner alive until it is done, whatever the listeners do.
///
/// Any thread may call a public operation; the owner's does it (`ObservableOwner::onOwner`).  [any, blocks]
class ObservableBase : public ListenedTo {
public:
    void commitChange();
    void finishChange();

    /// Adds a function that runs when a change begins; with `callNow` it is called once at once, with the
    /// published value as pending. 0 if there are too many listeners.
    SlotHandle addPropagator(void* context, ListenerFunction function, Position position = Position::last,
                             bool callNow = false);
    /// Removes the last one added that matches; a null context matches any.
    void removePropagator(void* context, ListenerFunction function);

    /// Adds two functions, of which either may be null. 0 if there are too many listeners.
    SlotHandle subscribe(void* context, ListenerFunction before, ListenerFunction after,
                         Position position = Position::last, bool callBeforeNow = false,
                         bool callAfterNow = false);
    /// Removes the last one that matches the before function or, if none does, the after function; a null
    /// context matches any, a null function none. Then calls the functions that are asked for, unless the
    /// change that runs has called them or is about to: the after function but in the after phase, the before
    /// function but in the before phase and until the after phase.
    void unsubscribe(void* context, ListenerFunction before, ListenerFunction after,
                     bool callBeforeNow = false, bool callAfterNow = false);

    /// Whether the published value is the default, that is unset.  [owner]
    [[nodiscard]] virtual bool isDefault() const = 0;

    /// Whether before functions run: the value is about to change, and after functions will follow.  [owner]
    [[nodiscard]] bool isAboutToChange() const noexcept { return state == State::before; }

protected:
    enum class State : std::uint8_t {
        idle = 0,
        propagating = 1,
        replacing = 2,  ///< Propagating a value that a propagator put in place of the first one.
        propagated = 3,
        before = 4,
        committed = 5,
        after = 6,
    };

    /// What a phase gives back: the value already was the pending one, or anything else.
    static constexpr std::uint32_t done = 0;
    static constexpr std::uint32_t equal = 2;

    struct Addresses {
        const void* published;  // of a value that is not const itself
        void* pending;
        const void* defaultValue;
    };

    explicit ObservableBase(ObservableOwner& owner) noexcept : ListenedTo(owner) {}
    ObservableBase(ObservableOwner& owner, TellsOwner) noexcept : ListenedTo(owner), ownerIsTold(true) {}
    ~ObservableBase() = default;

    /// On the owner's thread.
    std::uint32_t begin(const void* incoming);
    std::uint32_t change(const void* incoming);

    /// Whether a change would begin and be done with in one go: none is going on, and no propagator can
    /// interfere. Then `runBefore` and `runAfter`, around the publication, are all that there is to it.
    [[nodiscard]] bool isSimple() const noexcept { return state == State::idle && propagators.isEmpty(); }
    [[nodiscard]] bool hasSubscribers() const noexcept { return !subscribers.isEmpty(); }
    /// What a change begins with, before propagators.
    void tellOwner() {
        if (ownerIsTold) {
            ownerTold();
        }
    }
    void enter(State next) noexcept { state = next; }
    /// Whether the change that has just begun still brings the value that it began with.
    [[nodiscard]] bool bringsFirstValue() const noexcept { return state == State::propagating; }
    void runBefore(const Addresses& at) {
        state = State::before;
        if (hasBeforeFunctions) {
            runSubscribers(&SubscriberNode::beforeFunction, at);
        }
    }
    void runAfter(const Addresses& at) {
        state = State::after;
        runSubscribers(&SubscriberNode::afterFunction, at);
        changed = false;
        state = State::idle;
    }

    // What the value's type adds.
    [[nodiscard]] virtual bool pendingEquals(const void* incoming) const = 0;
    [[nodiscard]] virtual bool pendingEqualsPublished() const = 0;
    virtual void storePending(const void* incoming) = 0;
    virtual void publish() = 0;
    [[nodiscard]] virtual Addresses addresses() noexcept = 0;

private:
    void ownerTold();
    void commit();
    void finish();
    void runPropagators();
    void runRestOfPropagators();
    void runSubscribers(ListenerFunction SubscriberNode::*function, const Addresses& at);
    void runRestOfSubscribers(ListenerFunction SubscriberNode::*function, const Addresses& at);
    void completeSubscribers();
    void callNow(void* context, ListenerFunction function, Reason reason);

    ListenerList<PropagatorNode> propagators;
    ListenerList<SubscriberNode> subscribers;
    State state = State::idle;
    bool changed : 1 = false;             // whether subscribers are to be told of the change that runs
    bool hasBeforeFunctions : 1 = false;  // whether there ever was one: most values have none to walk through
    const bool ownerIsTold : 1 = false;

protected:
    bool incomingIsKept = false;  // whether the incoming value is kept beside the published one
};

}  // namespace korva::framework
