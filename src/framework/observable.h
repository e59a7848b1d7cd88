// Values that others listen to.
#pragma once

#include <cstdint>
#include <type_traits>
#include <utility>

#include "framework/equal_values.h"
#include "framework/observable_base.h"

namespace korva::framework {

/// A value of an active object, declared as its member with the object itself as the owner:
///
///     Observable<std::uint32_t> sampleRate{*this};
///
/// A change runs in three phases (see `ObservableBase`), and an equal value changes nothing and calls nobody.
/// A counted pointer has one share of what it points at, and one of what a change brings; the old one goes as
/// the change is committed.
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
        : ObservableBase(owner, tells), resetValue(&ordinaryDefault()), current(ordinaryDefault()) {}

    /// `lasting` is the default and the initial value. It lives as long as the observable does: a constant.
    Observable(ObservableOwner& owner, const T& lasting)
        : ObservableBase(owner), resetValue(&lasting), current(lasting) {
        if constexpr (isKeptTwice) {
            incomingValue = lasting;
        }
    }
    Observable(ObservableOwner& owner, const T&& temporary) = delete;

    /// The published value.  [owner]
    [[nodiscard]] const T& value() const noexcept { return current; }
    /// The value that a change brings; between changes the published one, unless a change was begun and
    /// finished without a commit.  [owner]
    [[nodiscard]] const T& pending() const noexcept { return hasIncoming() ? incomingValue : current; }
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

    /// The same with a value that the caller is done with: a counted one is handed over without counting.
    std::uint32_t set(T&& incoming) {
        if (owner().isOwnerThread() && isSimple()) [[likely]] {
            return setSimply(std::move(incoming));
        }
        const T kept = std::move(incoming);
        return set(kept);
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
    template <class Incoming>
    std::uint32_t setSimply(Incoming&& incoming) {
        if (equalValues<T>(pending(), incoming)) {
            return equal;
        }
        // What differs from the pending value differs from the published one too if that was pending, unless
        // the owner puts another in its place: long values are compared once, short ones at no cost again.
        const bool wasInStep = !hasIncoming();
        enter(State::propagating);
        takeIncoming(std::forward<Incoming>(incoming));
        tellOwner();
        if (!(wasInStep && bringsFirstValue()) && equalValues(current, incomingValue)) {
            enter(State::idle);
            return done;
        }
        if (!hasSubscribers()) {
            enter(State::before);
            publish();
            enter(State::idle);
            return done;
        }
        runBefore(addresses());
        publish();
        runAfter(addresses());
        return done;
    }

    // Plain values are kept twice, the published and the pending one. Of all others a second copy costs:
    // there is one only while a change brings it, and `incomingValue` is empty otherwise.
    static constexpr bool isKeptTwice = std::is_trivially_copyable_v<T>;

    [[nodiscard]] bool hasIncoming() const noexcept { return isKeptTwice || incomingIsKept; }
    template <class Incoming>
    void takeIncoming(Incoming&& incoming) {
        incomingValue = std::forward<Incoming>(incoming);
        incomingIsKept = !isKeptTwice;
    }

    bool pendingEquals(const void* incoming) const override {
        return equalValues(pending(), *static_cast<const T*>(incoming));
    }
    bool pendingEqualsPublished() const override { return equalValues(current, pending()); }
    void storePending(const void* incoming) override { takeIncoming(*static_cast<const T*>(incoming)); }
    void publish() override {
        if constexpr (isKeptTwice) {
            current = incomingValue;
        } else if (incomingIsKept) {
            incomingIsKept = false;
            current = std::exchange(incomingValue, T{});
        }
    }
    Addresses addresses() noexcept override {
        return {&current, hasIncoming() ? &incomingValue : &current, resetValue};
    }

    const T* resetValue;
    T current;
    T incomingValue{};
};

}  // namespace korva::framework
