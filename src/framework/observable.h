// Values that others listen to.
#pragma once

#include <cstdint>
#include <utility>

#include "framework/equal_values.h"
#include "framework/observable_base.h"

namespace korva::framework {

/// A value of an active object, declared as its member with the object itself as the owner:
///
///     Observable<std::uint32_t> sampleRate{*this};
///
/// A change runs in three phases (see `ObservableBase`), and an equal value changes nothing and calls nobody.
/// Both the published and the pending value are kept, so a counted pointer has two shares of what it points
/// at; the old ones go as a change is committed.
///
/// Value types: flags, integers, floats, identifiers, strings, plain records, vectors of floats, and counted
/// or shared pointers. `T{}` is the default unless another one is given.
template <class T>
class Observable final : public ObservableBase {
public:
    /// A flag of `set`: afterwards the value is set to its default.
    static constexpr std::uint32_t pulse = 0x100;

    explicit Observable(ObservableOwner& owner) : Observable(owner, ordinaryDefault()) {}
    Observable(ObservableOwner& owner, TellsOwner tells)
        : ObservableBase(owner, tells),
          resetValue(&ordinaryDefault()),
          current(ordinaryDefault()),
          incomingValue(ordinaryDefault()) {}

    /// `lasting` is the default and the initial value. It lives as long as the observable does: a constant.
    Observable(ObservableOwner& owner, const T& lasting)
        : ObservableBase(owner), resetValue(&lasting), current(lasting), incomingValue(lasting) {}
    Observable(ObservableOwner& owner, const T&& temporary) = delete;

    /// The published value.  [owner]
    [[nodiscard]] const T& value() const noexcept { return current; }
    /// The value that a change brings; between changes the published one, unless a change was begun and
    /// finished without a commit.  [owner]
    [[nodiscard]] const T& pending() const noexcept { return incomingValue; }
    [[nodiscard]] const T& defaultValue() const noexcept { return *resetValue; }
    [[nodiscard]] bool isDefault() const override { return equalValues(current, *resetValue); }

    /// A copy of the published value, for other threads; the default if the owner's is gone.  [any, blocks]
    [[nodiscard]] T read() const {
        T copy = *resetValue;
        owner().template onOwner<bool>([&] {
            copy = current;
            return true;
        });
        return copy;
    }

    /// The whole change. 2: the value was pending already; 0 otherwise, also when the change was dropped.
    /// [any, blocks]
    std::uint32_t set(const T& incoming, std::uint32_t flags = 0) {
        if (owner().isOwnerThread()) [[likely]] {
            return setHere(incoming, flags);
        }
        // The calling thread serves others while it waits, and one of them may change what it refers to.
        const T copy = incoming;
        return owner().template onOwner<std::uint32_t>([&] { return setHere(copy, flags); });
    }

    /// The first phase; result as of `set`. The others are `commitChange` and `finishChange`.  [any, blocks]
    std::uint32_t beginChange(const T& incoming) {
        const T copy = incoming;
        return owner().template onOwner<std::uint32_t>([&] { return begin(&copy); });
    }

    /// Sets the value to its default.  [any, blocks]
    std::uint32_t reset() { return set(*resetValue); }

private:
    static const T& ordinaryDefault() {
        static const T value{};
        return value;
    }

    std::uint32_t setHere(const T& incoming, std::uint32_t flags) {
        const std::uint32_t result = isSimple() ? setSimply(incoming) : setByPhases(incoming);
        if ((flags & pulse) != 0) {
            change(resetValue);
        }
        return result;
    }

    // A copy: a change under way is finished first, and its listeners may change what `incoming` refers to.
    std::uint32_t setByPhases(const T& incoming) {
        const T copy = incoming;
        return change(&copy);
    }

    // What `change` comes to without propagators, in line.
    std::uint32_t setSimply(const T& incoming) {
        if (equalValues(incomingValue, incoming)) {
            return equal;
        }
        enter(State::propagating);
        incomingValue = incoming;
        tellOwner();
        if (equalValues(current, incomingValue)) {
            enter(State::idle);
            return done;
        }
        if (!hasSubscribers()) {
            enter(State::before);
            current = incomingValue;
            enter(State::idle);
            return done;
        }
        const Addresses at{&current, &incomingValue, resetValue};
        runBefore(at);
        current = incomingValue;
        runAfter(at);
        return done;
    }

    bool pendingEquals(const void* incoming) const override {
        return equalValues(incomingValue, *static_cast<const T*>(incoming));
    }
    bool pendingEqualsPublished() const override { return equalValues(current, incomingValue); }
    void storePending(const void* incoming) override { incomingValue = *static_cast<const T*>(incoming); }
    void publish() override { current = incomingValue; }
    Addresses addresses() noexcept override { return {&current, &incomingValue, resetValue}; }

    const T* resetValue;
    T current;
    T incomingValue;
};

}  // namespace korva::framework
