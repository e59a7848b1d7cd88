// What one object of the stress test must do.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "tests/framework/stress_thing.h"

namespace korva::test {

/// The counts, the value and the listeners of one `Thing`, kept by the one thread that works on it, and the
/// calls that each operation must cause.
class ThingModel {
public:
    std::uint32_t references = 1;
    std::int32_t holds = 0;
    int closes = 0;
    std::uint32_t value = 0;

    /// A `close` that comes: whether it is the one that counts is known from the holds alone.
    void close() {
        if (holds > 0) {
            --holds;
        } else {
            closes = 1;
        }
    }

    [[nodiscard]] bool hasListener(int index) const {
        return std::find(listeners.begin(), listeners.end(), index) != listeners.end();
    }

    void subscribe(int index, framework::Position position, bool callBefore, bool callAfter) {
        listeners.insert(placeFor(position), index);
        expectNow(index, callBefore, callAfter, framework::Reason::subscribed, false);
    }

    void unsubscribe(int index, bool callBefore, bool callAfter) {
        std::erase(listeners, index);
        expectNow(index, callBefore, callAfter, framework::Reason::removed, true);
    }

    /// Gives what `set` must give.
    std::uint32_t set(std::uint32_t next) {
        if (next == value) {
            return 2;
        }
        expectWalk('b', value, next);
        expectWalk('a', next, next);
        value = next;
        return 0;
    }

    /// The calls since the last time.
    std::vector<Call> takeExpected() { return std::exchange(expected, {}); }

private:
    std::vector<int>::iterator placeFor(framework::Position position) {
        switch (position) {
            case framework::Position::first:
                return listeners.begin();
            case framework::Position::beforeLast:
                return listeners.end() - 1;
            case framework::Position::afterFirst:
                return listeners.begin() + 1;
            case framework::Position::last:
                break;
        }
        return listeners.end();
    }

    void expectWalk(char phase, std::uint32_t published, std::uint32_t pending) {
        for (const int index : listeners) {
            if (index != derivation) {
                expected.push_back({index, phase, published, pending, framework::Reason::change});
            }
        }
    }

    // Both values are the published one; a listener that leaves is called after, then before.
    void expectNow(int index, bool callBefore, bool callAfter, framework::Reason reason, bool afterFirst) {
        const auto call = [&](char phase, bool wanted) {
            if (wanted) {
                expected.push_back({index, phase, value, value, reason});
            }
        };
        call(afterFirst ? 'a' : 'b', afterFirst ? callAfter : callBefore);
        call(afterFirst ? 'b' : 'a', afterFirst ? callBefore : callAfter);
    }

    // The pair that the derived value hangs on is a listener too.
    static constexpr int derivation = -1;

    std::vector<int> listeners{derivation};
    std::vector<Call> expected;
};

}  // namespace korva::test
