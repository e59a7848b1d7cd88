#include "platform/key_tree.h"

#include <cstdint>
#include <string>

namespace korva::platform {

using namespace registry_result;

namespace {

RegistryResult deleteKeyAndAllBelow(const RegistryKey& parent, std::string_view path);

// What can't be deleted is stepped over, and makes the deletion of `key` itself fail. So is what isn't found
// by the name that it is listed under, since one that no text can hold would be the next one for ever.
void deleteKeysBelow(const RegistryKey& key) {
    std::uint32_t index = 0;
    for (std::string name; key.keyName(index, name) == success;) {
        if (deleteKeyAndAllBelow(key, name) != success) {
            ++index;
        }
    }
}

// An empty path names the parent, which opens and would lose all that is below it.
RegistryResult deleteKeyAndAllBelow(const RegistryKey& parent, std::string_view path) {
    RegistryResult result = parent.deleteKey(path);
    if (result != success && result != notFound && result != invalidParameter) {
        RegistryKey key;
        result = parent.open(path, RegistryAccess::readWrite, key);
        if (result == success) {
            deleteKeysBelow(key);
            result = parent.deleteKey(path);
        }
    }
    return result;
}

}  // namespace

RegistryResult deleteKeyTree(const RegistryKey& parent, std::string_view path) {
    const RegistryResult result = deleteKeyAndAllBelow(parent, path);
    return result == notFound ? success : result;
}

}  // namespace korva::platform
