// How an object writes down which of its values follow from which.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "framework/equal_values.h"
#include "framework/nested_watch.h"
#include "framework/observable.h"

namespace korva::framework {

/// The values that a derived value is computed from.
template <class... T>
struct Sources {
    std::tuple<Observable<T>*...> values;
    bool othersArePublished;
};

/// In a change each source counts with what it is about to be, so that a value derived from several that
/// change together is computed from all their new values. The usual form.
template <class... T>
[[nodiscard]] Sources<T...> from(Observable<T>&... sources) noexcept {
    return {{&sources...}, false};
}

/// The source that changes counts with what it is about to be, the others with what is published.
template <class... T>
[[nodiscard]] Sources<T...> fromPublished(Observable<T>&... sources) noexcept {
    return {{&sources...}, true};
}

namespace detail {

/// Listeners that stay until they are cut.
class Wire {
public:
    Wire() = default;
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;
    virtual ~Wire() = default;

    /// Removes the listeners.
    virtual void cut() = 0;
};

/// A value that is a function of others: begun by a propagator on each source, and committed and finished by
/// a pair of subscribers at the head of each source's list. So all derived values are computed before any is
/// published, and whoever subscribes to a source finds them changed already.
///
/// A change that reaches several sources, one through the other, comes here by each of them. The first finds
/// them all changed if it is the nearest one, which is subscribed first; the others find nothing new.
template <class Function, class T, class... S>
class Derivation final : public Wire {
public:
    Derivation(Observable<T>& derived, Sources<S...> computedFrom, Function computation)
        : target(derived), sources(computedFrom), function(std::move(computation)) {
        forEachSource([this](ObservableBase& source) {
            source.addPropagator(this, &propagate, Position::last, true);
            source.subscribe(this, &commit, &finish, Position::first, true, true);
        });
    }

    void cut() override {
        forEachSource([this](ObservableBase& source) {
            source.removePropagator(this, &propagate);
            source.unsubscribe(this, &commit, &finish);
        });
    }

private:
    using Inputs = std::tuple<S...>;

    static void propagate(void* context, ListenedTo& source, ActiveObject&, const void*, void*, const void*,
                          Reason) {
        auto& self = *static_cast<Derivation*>(context);
        if (self.takeInputs(source)) {
            self.target.beginChange(std::apply(self.function, *self.inputs));
        }
    }

    /// Whether the value hasn't been computed of these already.
    bool takeInputs(const ListenedTo& changing) {
        Inputs incoming = std::apply(
            [&](const auto*... source) { return Inputs(valueOf(*source, changing)...); }, sources.values);
        const bool areNew = !inputs || !areEqual(*inputs, incoming, std::index_sequence_for<S...>());
        inputs = std::move(incoming);
        return areNew;
    }

    template <std::size_t... I>
    static bool areEqual(const Inputs& a, const Inputs& b, std::index_sequence<I...>) {
        return (equalValues(std::get<I>(a), std::get<I>(b)) && ...);
    }

    static void commit(void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
        static_cast<Derivation*>(context)->target.commitChange();
    }

    static void finish(void* context, ListenedTo&, ActiveObject&, const void*, void*, const void*, Reason) {
        static_cast<Derivation*>(context)->target.finishChange();
    }

    template <class U>
    const U& valueOf(const Observable<U>& source, const ListenedTo& changing) const noexcept {
        const bool isPublished = sources.othersArePublished && &source != &changing;
        return isPublished ? source.value() : source.pending();
    }

    template <class Each>
    void forEachSource(const Each& each) {
        std::apply([&](auto*... source) { (each(*source), ...); }, sources.values);
    }

    Observable<T>& target;
    Sources<S...> sources;
    Function function;
    std::optional<Inputs> inputs;  ///< Of the last computation.
};

/// Two functions around each change of a value.
template <class T, class Before, class After>
class Pair final : public Wire {
public:
    Pair(Observable<T>& watched, Before beforeChange, After afterChange)
        : value(watched), before(std::move(beforeChange)), after(std::move(afterChange)) {
        value.subscribe(this, &callBefore, &callAfter);
    }

    void cut() override { value.unsubscribe(this, &callBefore, &callAfter); }

private:
    static void callBefore(void* context, ListenedTo&, ActiveObject&, const void* published, void* pending,
                           const void*, Reason) {
        static_cast<Pair*>(context)->before(*static_cast<const T*>(published),
                                            *static_cast<const T*>(pending));
    }

    static void callAfter(void* context, ListenedTo&, ActiveObject&, const void* published, void*,
                          const void*, Reason) {
        static_cast<Pair*>(context)->after(*static_cast<const T*>(published));
    }

    Observable<T>& value;
    Before before;
    After after;
};

}  // namespace detail

/// A base of a class `Self` that wires its values. Functions are given as methods of `Self`, or as anything
/// that can be called. The wires are part of the object: those on its own values need no end, those on values
/// of others are cut in `onClose`, while the others are there. Works that are done and undone are watched
/// (`watch`) and end where the `NestedWatch` does.  [owner]
template <class Self>
class Wiring {
public:
    Wiring(const Wiring&) = delete;
    Wiring& operator=(const Wiring&) = delete;

protected:
    Wiring() = default;
    ~Wiring() = default;

    /// `target` becomes what `function` gives for the sources' values, now and after every change of one. The
    /// function decides nothing but the value. It is called once for a change of several sources of which one
    /// follows from the other, if that other is wired to it first; else perhaps several times.
    template <class T, class... S, class Function>
    void derive(Observable<T>& target, Sources<S...> sources, Function function) {
        auto computation = bound(std::move(function));
        wires.push_back(std::make_unique<detail::Derivation<decltype(computation), T, S...>>(
            target, sources, std::move(computation)));
    }

    /// Calls `before(oldValue, newValue)` before each change of `value`, and `after(newValue)` after it.
    template <class T, class Before, class After>
    void pair(Observable<T>& value, Before before, After after) {
        auto first = bound(std::move(before));
        auto second = bound(std::move(after));
        wires.push_back(std::make_unique<detail::Pair<T, decltype(first), decltype(second)>>(
            value, std::move(first), std::move(second)));
    }

    /// Begins a chain of values for a `NestedWatch`:
    ///
    ///     building = watch(plan).whileSet()
    ///                    .then(material).whileSet(&House::order, &House::sendBack)
    ///                    .then(size).onEveryValue(&House::build, &House::tearDown);
    ///
    /// The functions take nothing, or the value: the new one to enter, the old one to leave.
    template <class T>
    [[nodiscard]] auto watch(Observable<T>& value) {
        return LevelOf<T>(*this, value, {});
    }

    /// Ends the derivations and pairs, the last one first.
    void cutWires() {
        while (!wires.empty()) {
            wires.back()->cut();
            wires.pop_back();
        }
    }

private:
    template <class T>
    class LevelOf;

    /// The levels so far; assigned to a `NestedWatch`, they begin.
    class Levels {
    public:
        Levels(Wiring& wired, std::vector<NestedWatch::Level> soFar)
            : wiring(wired), levels(std::move(soFar)) {}

        template <class T>
        [[nodiscard]] LevelOf<T> then(Observable<T>& value) && {
            return LevelOf<T>(wiring, value, std::move(levels));
        }

        operator NestedWatch() && { return NestedWatch(std::move(levels)); }

    private:
        Wiring& wiring;
        std::vector<NestedWatch::Level> levels;
    };

    /// A value, still without what to do.
    template <class T>
    class LevelOf {
    public:
        LevelOf(Wiring& wired, Observable<T>& watched, std::vector<NestedWatch::Level> above)
            : wiring(wired), value(watched), levels(std::move(above)) {}

        /// Entered while the value differs from its default.
        [[nodiscard]] Levels whileSet() && { return std::move(*this).level(true, nullptr, nullptr); }

        template <class Enter, class Leave>
        [[nodiscard]] Levels whileSet(Enter enter, Leave leave) && {
            return std::move(*this).level(true, wiring.action(value, enter), wiring.action(value, leave));
        }

        /// Entered with every value, and left and entered again with every change.
        template <class Enter, class Leave>
        [[nodiscard]] Levels onEveryValue(Enter enter, Leave leave) && {
            return std::move(*this).level(false, wiring.action(value, enter), wiring.action(value, leave));
        }

    private:
        Levels level(bool onlyWhileSet, NestedWatch::Action enter, NestedWatch::Action leave) && {
            levels.push_back({&value, onlyWhileSet, std::move(enter), std::move(leave)});
            return Levels(wiring, std::move(levels));
        }

        Wiring& wiring;
        Observable<T>& value;
        std::vector<NestedWatch::Level> levels;
    };

    // A method becomes a call on this object.
    template <class Function>
    auto bound(Function function) {
        if constexpr (std::is_member_function_pointer_v<Function>) {
            return [ self = static_cast<Self*>(this), function ]<class... A>(
                const A&... arguments) requires std::is_invocable_v<Function, Self&, const A&...> {
                return std::invoke(function, *self, arguments...);
            };
        } else {
            return function;
        }
    }

    template <class T, class Function>
    NestedWatch::Action action(Observable<T>& value, Function function) {
        auto call = bound(std::move(function));
        if constexpr (std::is_invocable_v<decltype(call)&, const T&>) {
            return [call, &value]() mutable { call(value.value()); };
        } else {
            return call;
        }
    }

    std::vector<std::unique_ptr<detail::Wire>> wires;
};

}  // namespace korva::framework
