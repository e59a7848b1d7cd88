#include "platform/empty_keys.h"

#include <cstddef>
#include <string>

namespace korva::platform {

using namespace registry_result;

namespace {

/// The longest name of a value, as UTF-8.
constexpr std::size_t nameCapacity = std::size_t{4} * 16384;

bool isEmpty(const RegistryKey& key) {
    std::string name;
    return key.keyName(0, name) == noMoreItems && key.valueName(0, nameCapacity, name) == noMoreItems;
}

}  // namespace

RegistryResult deleteIfEmpty(const RegistryKey& parent, std::string_view path) {
    RegistryKey key;
    RegistryResult result = parent.open(path, RegistryAccess::read, key);
    if (result == success && isEmpty(key)) {
        key = RegistryKey();
        result = parent.deleteKey(path);
    }
    return result == notFound ? success : result;
}

}  // namespace korva::platform
