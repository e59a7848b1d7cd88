#include "framework/object_base.h"

#include <mutex>

namespace korva::framework {

ObjectBase::ObjectBase() : lock(Ref<SharedRecursiveLock>::adopt(new SharedRecursiveLock)) {}

// References are left only when a constructor of a derived class raised an exception: whoever holds a weak
// reference learns that there is no object, and waits no longer.
ObjectBase::~ObjectBase() {
    if (refCount != 0) {
        const std::lock_guard guard(*lock);
        --refCount;
        onRelease(refCount);
        clearWeak();
        onReleaseLocked(refCount);
    }
    clearWeak();
    endBuilding();
}

platform::ReferenceCount ObjectBase::AddRef() {
    const Ref<SharedRecursiveLock> keptLock = lock;
    std::uint32_t count = 0;
    {
        const std::lock_guard guard(*keptLock);
        count = ++refCount;
    }
    onAddRef(count);
    return count;
}

platform::ReferenceCount ObjectBase::Release() {
    const Ref<SharedRecursiveLock> keptLock = lock;
    std::uint32_t count = 0;
    bool isLast = false;
    {
        const std::lock_guard guard(*keptLock);
        count = --refCount;
        onRelease(count);
        if (count == 0) {
            clearWeak();
            isLast = !std::exchange(destroying, true);
        }
        onReleaseLocked(count);
    }
    if (isLast) {
        destroy();
    }
    return count;
}

bool ObjectBase::addRefIfAlive() {
    const std::lock_guard guard(*lock);
    if (refCount == 0 || destroying) {
        return false;
    }
    AddRef();
    return true;
}

bool ObjectBase::hasReferences() const {
    const std::lock_guard guard(*lock);
    return refCount != 0;
}

Ref<WeakReference> ObjectBase::getWeak() {
    const std::lock_guard guard(*lock);
    if (!weak) {
        // An object that is on its way out has none that could be locked.
        weak = Ref<WeakReference>::adopt(new WeakReference(lock, destroying ? nullptr : this));
    }
    return weak;
}

void ObjectBase::clearWeak() noexcept {
    const std::lock_guard guard(*lock);
    if (weak) {
        weak->target = nullptr;
    }
}

ObjectBase* ObjectBase::castTo(TypeTag tag) noexcept {
    return tag == typeTag<ObjectBase>() ? this : nullptr;
}

std::shared_ptr<const ClassInfo> ObjectBase::getClassInfo() const {
    return {};
}

void ObjectBase::onAddRef(std::uint32_t) {}

void ObjectBase::onReleaseLocked(std::uint32_t) {}

void ObjectBase::onRelease(std::uint32_t) {}

void ObjectBase::destroy() {
    delete this;
}

}  // namespace korva::framework
