// The root of the framework's classes: a reference count, weak references, and class tags.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

#include "framework/ref.h"
#include "framework/shared_recursive_lock.h"
#include "framework/type_tag.h"
#include "framework/weak_reference.h"
#include "platform/reference_count.h"

namespace korva::framework {

class ClassInfo;

/// An object on the heap that lives as long as somebody has a reference to it. Made by `create<T>()` and by
/// nothing else; its creator has the first reference.
///
/// A derived class stands on `ObjectClass<Derived, Base>`, which answers for its class.
class ObjectBase {
public:
    ObjectBase(const ObjectBase&) = delete;
    ObjectBase& operator=(const ObjectBase&) = delete;

    /// Both give the new count; the last `Release` destroys the object. They are declared as those of
    /// published interfaces are, so that one method serves both.  [any]
    virtual platform::ReferenceCount AddRef();
    virtual platform::ReferenceCount Release();

    /// The object itself if `tag` is that of its class or of one of its bases, else null.  [any]
    [[nodiscard]] virtual ObjectBase* castTo(TypeTag tag) noexcept;

    /// What the members of the object's class are; null if the class doesn't tell.  [any]
    [[nodiscard]] virtual std::shared_ptr<const ClassInfo> getClassInfo() const;

    /// The weak reference to this object, made when first asked for.  [any]
    [[nodiscard]] Ref<WeakReference> getWeak();

    /// Adds a reference unless the last one is gone already; for whoever knows the object by its address
    /// only. Null then.  [any]
    template <class T>
    [[nodiscard]] static Ref<T> shareIfAlive(T& object) {
        return object.addRefIfAlive() ? Ref<T>::adopt(&object) : nullptr;
    }

    // Only `create` allocates, so that no object misses its last step.
    static void operator delete(void* memory) noexcept { ::operator delete(memory); }
    static void operator delete(void* memory, std::align_val_t alignment) noexcept {
        ::operator delete(memory, alignment);
    }

protected:
    ObjectBase();
    virtual ~ObjectBase();

    /// Hooks with the new count: after an `AddRef` (inside the lock if it came by a weak reference); in
    /// `Release`, under the lock, before and after the weak reference is cleared. They take no reference to
    /// the object.  [any]
    virtual void onAddRef(std::uint32_t count);
    virtual void onReleaseLocked(std::uint32_t count);
    virtual void onRelease(std::uint32_t count);

    /// Ends the object after its last `Release`; called once.  [any]
    virtual void destroy();

    /// Between these two, weak references to the object wait.
    void beginBuilding() { lock->beginBuilding(); }
    void endBuilding() { lock->endBuilding(); }

    [[nodiscard]] bool hasReferences() const;

private:
    template <class T, class... Arguments>
    friend Ref<T> create(Arguments&&... arguments);

    static void* operator new(std::size_t size) { return ::operator new(size); }
    static void* operator new(std::size_t size, std::align_val_t alignment) {
        return ::operator new(size, alignment);
    }

    bool addRefIfAlive();
    void clearWeak() noexcept;

    // Shared, since the last holder's release may free the object while another still leaves the lock.
    Ref<SharedRecursiveLock> lock;
    Ref<WeakReference> weak;  // under the lock, like the rest
    std::uint32_t refCount = 1;
    bool destroying = false;  // a reference taken and dropped by `onClose` must not begin it again
};

/// Makes an object on the calling thread, which owns it if it is an active one; the result is its first
/// reference. Whoever holds a weak reference from inside the constructor may go on from here, also when the
/// constructor raised an exception.  [any]
template <class T, class... Arguments>
[[nodiscard]] Ref<T> create(Arguments&&... arguments) {
    Ref<T> object = Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
    static_cast<ObjectBase*>(object.get())->endBuilding();
    return object;
}

/// The object as a `T` if it is one, else null; it adds no reference.  [any]
template <class T>
[[nodiscard]] T* cast(ObjectBase* object) noexcept {
    return object == nullptr ? nullptr : static_cast<T*>(object->castTo(typeTag<T>()));
}

}  // namespace korva::framework
