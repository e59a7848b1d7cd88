// An active object that tells of its life.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "framework/active_object.h"

namespace korva::test {

/// What has become of the objects that were given it; it outlives them.  [any]
struct LifeCounts {
    std::atomic<int> closes{0};
    std::atomic<int> ends{0};
    std::atomic<int> endsUnclosed{0};  ///< Objects that ended without having been closed.
    std::atomic<std::uint32_t> closingThread{0};
    std::atomic<std::uint32_t> endingThread{0};
};

/// Has a value, and counts its closes and its end.
class ActiveCounter final : public framework::ObjectClass<ActiveCounter, framework::ActiveObject> {
public:
    explicit ActiveCounter(LifeCounts& lifeCounts) : counts(lifeCounts) {}

    /// Done by `onClose`, before the base's.
    std::function<void(ActiveCounter&)> atClose;
    framework::Observable<std::uint32_t> value{*this};

    /// The end that nobody else brings about: for an object whose memory is left allocated on purpose.
    void end() { delete this; }

protected:
    ~ActiveCounter() override {
        if (closedCounter()->get() == 0) {
            ++counts.endsUnclosed;
        }
        counts.endingThread = framework::currentThreadNumber();
        ++counts.ends;
    }

    void onClose() override {
        counts.closingThread = framework::currentThreadNumber();
        ++counts.closes;
        if (atClose) {
            atClose(*this);
        }
        ActiveObject::onClose();
    }

private:
    LifeCounts& counts;
};

/// The number of references that an object has.  [any]
[[nodiscard]] inline std::uint32_t referencesTo(framework::ObjectBase& object) {
    object.AddRef();
    return object.Release();
}

}  // namespace korva::test
