// Objects of the framework that are published interfaces as well.
#pragma once

#include "framework/object_class.h"
#include "platform/published/results.h"
#include "platform/published/unknown.h"

namespace korva::framework {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"  // published interfaces have no destructor

/// The base of a class `Self` that extends `Base` and implements `Interface`, a published one: one reference
/// count serves both faces, and `QueryInterface` knows `Interface` and IUnknown. The interface's own methods
/// are `Self`'s.
template <class Self, class Base, class Interface>
class PublishedObject : public ObjectClass<Self, Base>, public Interface {
public:
    /// Null and E_NOINTERFACE for an interface that the object doesn't have.  [com]
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
        if (object == nullptr) {
            return published::nullPointer;
        }
        *object = nullptr;
        if (!(id == published::iidOf<IUnknown>)&&!(id == published::iidOf<Interface>)) {
            return published::noInterface;
        }
        *object = static_cast<Interface*>(this);
        AddRef();
        return published::ok;
    }
    platform::ReferenceCount STDMETHODCALLTYPE AddRef() override { return Base::AddRef(); }
    platform::ReferenceCount STDMETHODCALLTYPE Release() override { return Base::Release(); }

protected:
    using ObjectClass<Self, Base>::ObjectClass;
};

#pragma GCC diagnostic pop

}  // namespace korva::framework
