#include "apo/registration/apo_registration.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/empty_keys.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "platform/registry_values.h"
#include "platform/stored_values.h"

namespace korva::apo {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryValue;
using platform::WideView;
using published::APO_REG_PROPERTIES;
using namespace platform::registry_result;

constexpr std::string_view listParent = "AudioEngine";
constexpr std::string_view list = "AudioEngine\\AudioProcessingObjects";

using NamedValues = decltype(ListedObject::values);

RegistryResult openList(RegistryKey& opened) {
    RegistryResult result = success;
    const RegistryKey root = RegistryKey::root(platform::RegistryRoot::classesRoot, &result);
    return root ? root.create(list, RegistryAccess::write, opened) : result;
}

/// A text of a record; nothing if it has no end.
template <std::size_t capacity>
std::optional<WideView> terminated(const WCHAR (&text)[capacity]) {
    const WideView whole(text, capacity);
    const std::size_t end = whole.find(WCHAR{});
    return end == whole.npos ? std::nullopt : std::optional(whole.substr(0, end));
}

/// The list of a record goes on behind it.
IID interfaceAt(const APO_REG_PROPERTIES& properties, std::size_t index) {
    IID interfaceId{};
    std::memcpy(&interfaceId,
                reinterpret_cast<const std::byte*>(&properties) +
                    offsetof(APO_REG_PROPERTIES, iidAPOInterfaceList) + index * sizeof(IID),
                sizeof(IID));
    return interfaceId;
}

NamedValues valuesOf(const APO_REG_PROPERTIES& properties, WideView name, WideView copyright) {
    using platform::numberValue;
    using platform::stringValue;
    NamedValues values = {
        {"FriendlyName", stringValue(name)},
        {"Copyright", stringValue(copyright)},
        {"MajorVersion", numberValue(properties.u32MajorVersion)},
        {"MinorVersion", numberValue(properties.u32MinorVersion)},
        {"Flags", numberValue(properties.Flags)},
        {"MinInputConnections", numberValue(properties.u32MinInputConnections)},
        {"MaxInputConnections", numberValue(properties.u32MaxInputConnections)},
        {"MinOutputConnections", numberValue(properties.u32MinOutputConnections)},
        {"MaxOutputConnections", numberValue(properties.u32MaxOutputConnections)},
        {"MaxInstances", numberValue(properties.u32MaxInstances)},
        {"NumAPOInterfaces", numberValue(properties.u32NumAPOInterfaces)},
    };
    for (std::size_t i = 0; i < properties.u32NumAPOInterfaces; ++i) {
        const std::string text = platform::upperGuidText(interfaceAt(properties, i));
        values.emplace_back("APOInterface" + std::to_string(i), stringValue(platform::toWide(text)));
    }
    return values;
}

RegistryResult writeObject(const RegistryKey& objects, const std::string& name, const NamedValues& values) {
    RegistryResult result = objects.deleteTree(name);
    if (result != success && result != notFound) {
        return result;
    }
    RegistryKey object;
    result = objects.create(name, RegistryAccess::write, object);
    for (auto value = values.begin(); value != values.end() && result == success; ++value) {
        result = object.setValue(value->first, value->second.type, value->second.data);
    }
    return result;
}

}  // namespace

ListedObject listedObject(const APO_REG_PROPERTIES& properties) {
    return {std::string(list) + "\\" + platform::upperGuidText(properties.clsid),
            valuesOf(properties, terminated(properties.szFriendlyName).value_or(WideView()),
                     terminated(properties.szCopyrightInfo).value_or(WideView()))};
}

HRESULT RegisterAPO(const APO_REG_PROPERTIES* properties) {
    if (properties == nullptr) {
        return published::nullPointer;
    }
    const auto name = terminated(properties->szFriendlyName);
    const auto copyright = terminated(properties->szCopyrightInfo);
    if (!name || !copyright) {
        return published::invalidArgument;
    }
    const NamedValues values = valuesOf(*properties, *name, *copyright);
    const std::string clsid = platform::upperGuidText(properties->clsid);
    RegistryKey objects;
    RegistryResult result = openList(objects);
    if (result == success) {
        result = writeObject(objects, clsid, values);
        if (result != success) {
            // Half an object would count as one. The first failure is the one to tell.
            static_cast<void>(objects.deleteTree(clsid));
        }
    }
    return platform::hresultOf(result);
}

HRESULT UnregisterAPO(const CLSID& clsid) {
    RegistryResult result = success;
    const RegistryKey root = RegistryKey::root(platform::RegistryRoot::classesRoot, &result);
    RegistryKey objects;
    if (root) {
        result = root.open(list, RegistryAccess::write, objects);
    }
    return platform::hresultOf(result == success ? objects.deleteTree(platform::upperGuidText(clsid))
                                                 : result);
}

HRESULT removeEmptyObjectList() {
    RegistryResult result = success;
    const RegistryKey root = RegistryKey::root(platform::RegistryRoot::classesRoot, &result);
    if (root) {
        result = platform::deleteIfEmpty(root, list);
    }
    if (result == success) {
        result = platform::deleteIfEmpty(root, listParent);
    }
    return platform::hresultOf(result);
}

}  // namespace korva::apo
