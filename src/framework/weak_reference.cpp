#include "framework/weak_reference.h"

#include <mutex>
#include <utility>

#include "framework/object_base.h"

namespace korva::framework {

WeakReference::WeakReference(Ref<SharedRecursiveLock> sharedLock, ObjectBase* object) noexcept
    : objectLock(std::move(sharedLock)), target(object) {}

// The wait comes first, without a reference: were the constructor to fail, a reference would be to an object
// that its own constructor destroys.
Ref<ObjectBase> WeakReference::lock() const {
    if (!objectLock->waitUntilBuilt()) {
        return {};
    }
    const std::lock_guard guard(*objectLock);
    return Ref<ObjectBase>::share(target);
}

}  // namespace korva::framework
