// References that don't keep an object alive.
#pragma once

#include "framework/ref.h"
#include "framework/shared_count.h"
#include "framework/shared_recursive_lock.h"

namespace korva::framework {

class ObjectBase;

/// The one control object behind all weak references to an object. It outlives the object.  [any]
class WeakReference final : public SharedCount<WeakReference> {
public:
    WeakReference(Ref<SharedRecursiveLock> objectLock, ObjectBase* object) noexcept;

    /// A reference to the object, or null if it is gone. Waits until the object is built, so that nobody
    /// touches half of it; on the thread that builds it, null.  [any, blocks]
    [[nodiscard]] Ref<ObjectBase> lock() const;

private:
    friend class ObjectBase;

    Ref<SharedRecursiveLock> objectLock;
    ObjectBase* target;  // under the lock; null once the last reference is gone
};

/// A weak reference to a `T`. Null or one share of the object's `WeakReference`.
template <class T>
class WeakRef {
public:
    WeakRef() noexcept = default;
    explicit WeakRef(T& object) : reference(object.getWeak()) {}

    /// As `WeakReference::lock`.  [any, blocks]
    [[nodiscard]] Ref<T> lock() const {
        Ref<ObjectBase> object = reference ? reference->lock() : nullptr;
        return Ref<T>::adopt(static_cast<T*>(object.giveUp()));
    }

    explicit operator bool() const noexcept { return static_cast<bool>(reference); }

private:
    Ref<WeakReference> reference;
};

}  // namespace korva::framework
