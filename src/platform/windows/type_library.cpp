#include "platform/type_library.h"

#include <windows.h>

#include <oleauto.h>

#include <memory>
#include <string>

#include "platform/registry.h"

namespace korva::platform {
namespace {

struct Releases {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};

bool isThat(ITypeLib& found, const TypeLibrary& library) {
    TLIBATTR* attributes = nullptr;
    if (FAILED(found.GetLibAttr(&attributes))) {
        return false;
    }
    const bool isSame = IsEqualGUID(attributes->guid, library.id) &&
                        attributes->wMajorVerNum == library.major &&
                        attributes->wMinorVerNum == library.minor;
    found.ReleaseTLibAttr(attributes);
    return isSame;
}

/// What the system says of one that isn't registered depends on its version, so it isn't asked.
bool isRegistered(const TypeLibrary& library) {
    RegistryKey key;
    return RegistryKey::root(RegistryRoot::classesRoot)
               .open(typeLibraryFileKey(library), RegistryAccess::read, key) != registry_result::notFound;
}

}  // namespace

HRESULT registerTypeLibrary(const TypeLibrary& library, const std::filesystem::path& file) {
    ITypeLib* loaded = nullptr;
    if (const HRESULT result = LoadTypeLibEx(file.c_str(), REGKIND_NONE, &loaded); FAILED(result)) {
        return result;
    }
    const std::unique_ptr<ITypeLib, Releases> found(loaded);
    if (!isThat(*found, library)) {
        return TYPE_E_LIBNOTREGISTERED;
    }
    // Both texts are only read.
    std::wstring path = file.native();
    std::wstring folder = file.parent_path().native();
    return RegisterTypeLib(found.get(), path.data(), folder.data());
}

HRESULT unregisterTypeLibrary(const TypeLibrary& library) {
    return isRegistered(library)
               ? UnRegisterTypeLib(library.id, library.major, library.minor, LANG_NEUTRAL, SYS_WIN64)
               : S_OK;
}

}  // namespace korva::platform
