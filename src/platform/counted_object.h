// Objects behind published interfaces, and references to them.
#pragma once

#include <atomic>
#include <memory>

#include "platform/published/results.h"
#include "platform/published/unknown.h"
#include "platform/reference_count.h"

namespace korva::platform {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// The base of an object that implements the interfaces named, whose methods are its own. Made with `new`, it
/// has one reference, which is its maker's; the last one to go deletes it.  [any]
template <class First, class... Others>
class CountedObject : public First, public Others... {
public:
    CountedObject(const CountedObject&) = delete;
    CountedObject& operator=(const CountedObject&) = delete;

    /// The first interface is the one that stands for the object's identity.
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) {
            return published::nullPointer;
        }
        *object = nullptr;
        if (id == published::iidOf<IUnknown> || id == published::iidOf<First>) {
            *object = static_cast<First*>(this);
        }
        (giveIf<Others>(id, object), ...);
        if (*object == nullptr) {
            return published::noInterface;
        }
        AddRef();
        return published::ok;
    }
    ReferenceCount STDMETHODCALLTYPE AddRef() override {
        return references.fetch_add(1, std::memory_order_relaxed) + 1;
    }
    ReferenceCount STDMETHODCALLTYPE Release() override {
        // What every thread did with the object comes before its end.
        const ReferenceCount left = references.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    CountedObject() noexcept = default;
    virtual ~CountedObject() = default;

private:
    template <class Interface>
    void giveIf(REFIID id, void** object) noexcept {
        if (id == published::iidOf<Interface>) {
            *object = static_cast<Interface*>(this);
        }
    }

    std::atomic<ReferenceCount> references{1};
};

#pragma GCC diagnostic pop

struct ReleaseReference {
    template <class T>
    void operator()(T* object) const noexcept {
        object->Release();
    }
};

/// One reference to an object, or none.
template <class T>
using Reference = std::unique_ptr<T, ReleaseReference>;

/// One more reference to an object that is somebody else's.
template <class T>
[[nodiscard]] Reference<T> shareReference(T& object) {
    object.AddRef();
    return Reference<T>(&object);
}

}  // namespace korva::platform
