#include "platform/type_library.h"

#include <string>
#include <vector>

#include "platform/empty_keys.h"
#include "platform/property_key.h"
#include "platform/registry_values.h"
#include "platform/stored_values.h"

namespace korva::platform {
namespace {

using namespace registry_result;

std::string identifierPath(const TypeLibrary& library) {
    return "TypeLib\\" + upperGuidText(library.id);
}

/// Sets the default value of a key, and makes the key.
RegistryChange keyWith(std::string path, WideView text) {
    return {.kind = RegistryChange::Kind::setValue,
            .root = RegistryRoot::classesRoot,
            .path = std::move(path),
            .value = stringValue(text)};
}

}  // namespace

HRESULT registerTypeLibrary(const TypeLibrary& library, const std::filesystem::path& file) {
    const auto path = exactWide(file.native());
    const auto folder = exactWide(file.parent_path().native());
    if (!path || !folder) {
        return hresultOf(invalidData);
    }
    const std::string version = typeLibraryKey(library);
    const std::vector<RegistryChange> changes = {
        keyWith(version, toWide(library.title)),
        keyWith(typeLibraryFileKey(library), *path),
        keyWith(version + "\\FLAGS", toWide("0")),
        keyWith(version + "\\HELPDIR", *folder),
    };
    return hresultOf(applyRegistryChanges(changes));
}

HRESULT unregisterTypeLibrary(const TypeLibrary& library) {
    RegistryResult result = success;
    const RegistryKey root = RegistryKey::root(RegistryRoot::classesRoot, &result);
    if (!root) {
        return hresultOf(result);
    }
    result = root.deleteTree(typeLibraryKey(library));
    if (result == success) {
        result = deleteIfEmpty(root, identifierPath(library));
    }
    return result == notFound ? hresultOf(success) : hresultOf(result);
}

}  // namespace korva::platform
