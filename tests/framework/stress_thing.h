// The object that the stress test is made of.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <ostream>
#include <vector>

#include "framework/active_object.h"
#include "framework/thread_number.h"
#include "framework/wiring.h"

namespace korva::test {

/// What became of one object; it outlives it.  [any]
struct Fate {
    std::atomic<int> closes{0};
    std::atomic<int> ends{0};
    std::atomic<bool> wasOnOwner{true};  ///< False if any of these ran on another thread.
};

/// One call of a listener.
struct Call {
    int listener = 0;
    char phase = ' ';  ///< 'b' before, 'a' after.
    std::uint32_t published = 0;
    std::uint32_t pending = 0;
    framework::Reason reason = framework::Reason::change;

    friend bool operator==(const Call&, const Call&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Call& call) {
        return out << call.listener << call.phase << ' ' << call.published << " to " << call.pending
                   << ", reason " << static_cast<std::uint32_t>(call.reason);
    }
};

/// Has a value, one derived from it, and listeners that write down how they are called. Each listener also
/// tries to change the value, which must have no effect.
class Thing final : public framework::ObjectClass<Thing, framework::ActiveObject>,
                    public framework::Wiring<Thing> {
public:
    static constexpr int listenerCount = 6;

    explicit Thing(Fate& ownFate) : fate(ownFate) {
        derive(doubled, framework::from(value), [](std::uint32_t one) { return 2 * one; });
        for (int i = 0; i < listenerCount; ++i) {
            listeners[static_cast<std::size_t>(i)] = {this, i};
        }
    }

    framework::Observable<std::uint32_t> value{*this};
    framework::Observable<std::uint32_t> doubled{*this};
    std::vector<Call> calls;  // the owner's

    void subscribe(int index, framework::Position position, bool callBefore, bool callAfter) {
        value.subscribe(&listener(index), &beforeChange, &afterChange, position, callBefore, callAfter);
    }
    void unsubscribe(int index, bool callBefore, bool callAfter) {
        value.unsubscribe(&listener(index), &beforeChange, &afterChange, callBefore, callAfter);
    }

private:
    struct Listener {
        Thing* thing = nullptr;
        int index = 0;
    };

    ~Thing() override {
        checkThread();
        ++fate.ends;
    }

    void onClose() override {
        checkThread();
        ++fate.closes;
        ActiveObject::onClose();
    }

    void checkThread() {
        if (!isOwnerThread()) {
            fate.wasOnOwner = false;
        }
    }

    Listener& listener(int index) { return listeners[static_cast<std::size_t>(index)]; }

    static void beforeChange(void* context, framework::ListenedTo&, framework::ActiveObject&,
                             const void* published, void* pending, const void*, framework::Reason reason) {
        note(context, 'b', published, pending, reason);
    }
    static void afterChange(void* context, framework::ListenedTo&, framework::ActiveObject&,
                            const void* published, void* pending, const void*, framework::Reason reason) {
        note(context, 'a', published, pending, reason);
    }
    static void note(void* context, char phase, const void* published, const void* pending,
                     framework::Reason reason) {
        const Listener& listener = *static_cast<const Listener*>(context);
        Thing& thing = *listener.thing;
        thing.checkThread();
        thing.calls.push_back({listener.index, phase, *static_cast<const std::uint32_t*>(published),
                               *static_cast<const std::uint32_t*>(pending), reason});
        if (reason == framework::Reason::change) {
            thing.value.set(1'000'000);
        }
    }

    Fate& fate;
    std::array<Listener, listenerCount> listeners;
};

}  // namespace korva::test
