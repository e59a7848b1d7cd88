// What an object shares with its weak reference.
#pragma once

#include <atomic>
#include <cstdint>

#include "framework/shared_count.h"
#include "framework/waitable_counter.h"
#include "platform/mutex.h"

namespace korva::framework {

/// The lock of an object's reference count, and the latch that tells whether the object is built. Both live
/// here rather than in the object, since a weak holder may wait for them while the object goes.  [any]
class SharedRecursiveLock final : public SharedCount<SharedRecursiveLock> {
public:
    void lock() { mutex.lock(); }
    void unlock() { mutex.unlock(); }

    /// The calling thread begins to build the object.
    void beginBuilding();

    /// The object is built, or its constructor raised an exception.
    void endBuilding();

    /// Waits until the object is built, without limit. False at once on the thread that builds it: it would
    /// wait for itself.  [any, blocks]
    bool waitUntilBuilt() const;

private:
    // Recursive: a weak reference holds it while the object adds the reference.
    platform::RecursiveMutex mutex;
    mutable WaitableCounter ready{1};
    std::atomic<std::uint32_t> builder{0};  // the thread's number while `ready` is 0
};

}  // namespace korva::framework
