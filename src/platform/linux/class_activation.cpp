#include "platform/class_activation.h"

#include <dlfcn.h>

#include <optional>
#include <string>

#include "platform/counted_object.h"
#include "platform/property_key.h"
#include "platform/property_value.h"
#include "platform/published/class_factory.h"
#include "platform/published_call.h"
#include "platform/registry.h"
#include "platform/registry_values.h"
#include "platform/unicode.h"

namespace korva::platform {
namespace {

using GetClassObject = HRESULT(const CLSID&, const IID&, void**);

/// The path of the library that is registered for a class.
std::optional<std::string> registeredLibrary(const CLSID& classId) {
    RegistryKey key;
    RegistryValue stored;
    PropertyValue path;
    const RegistryKey classes = RegistryKey::root(RegistryRoot::classesRoot);
    if (classes.open("CLSID\\" + guidText(classId) + "\\InprocServer32", RegistryAccess::read, key) != 0 ||
        key.readValue("", stored) != 0 || variantOf(stored, *path.out()) != published::ok ||
        path->vt != VT_LPWSTR) {
        return std::nullopt;
    }
    return toUtf8(path->pwszVal);
}

/// Null unless it is loaded, for as long as the process, and has class objects.
GetClassObject* loadServer(const std::string& path) noexcept {
    if (!path.starts_with('/')) {
        return nullptr;
    }
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    return library == nullptr ? nullptr
                              : reinterpret_cast<GetClassObject*>(dlsym(library, "DllGetClassObject"));
}

}  // namespace

HRESULT createObjectOfClass(const CLSID& classId, const IID& id, void** object) noexcept {
    *object = nullptr;
    return publishedCall([&] {
        const std::optional<std::string> path = registeredLibrary(classId);
        GetClassObject* const getClassObject = path ? loadServer(*path) : nullptr;
        if (getClassObject == nullptr) {
            return classNotRegistered;
        }
        void* found = nullptr;
        const HRESULT result = getClassObject(classId, published::iidOf<IClassFactory>, &found);
        if (published::failed(result)) {
            return result;
        }
        const Reference<IClassFactory> factory(static_cast<IClassFactory*>(found));
        return factory->CreateInstance(nullptr, id, object);
    });
}

}  // namespace korva::platform
