#include "korva/monitor/instance_keys.h"

#include "platform/key_tree.h"
#include "platform/named_mutex.h"
#include "platform/property_key.h"
#include "services/instance_key.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryRoot;
namespace place = services::instance_place;
namespace result = platform::registry_result;

constexpr std::size_t guidDigits = 36;  ///< With its hyphens, without braces.

bool isGone(RegistryResult code) {
    return code == result::notFound || code == result::keyDeleted;
}

RegistryResult openBelowMachine(std::string_view path, RegistryAccess access, RegistryKey& key) {
    RegistryResult code = result::success;
    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine, &code);
    return code == result::success ? machine.open(path, access, key) : code;
}

/// Objects name their mutex in lower case, and so their key; who wrote the key's name otherwise meant that.
std::string mutexNameOf(const std::string& name) {
    return place::mutexName(instanceNameOf(name).value_or(name));
}

InstanceKey::Kind kindOf(RegistryResult opened, const std::string& name) {
    if (opened == result::isLink) {
        return InstanceKey::Kind::link;
    }
    if (opened != result::success) {
        return InstanceKey::Kind::unreadable;
    }
    return isInstanceLive(name) ? InstanceKey::Kind::live : InstanceKey::Kind::stale;
}

/// A name may have capitals, since the registry finds it by either, but no other form.
bool isKeyOfInstance(const std::string& name) {
    return name.starts_with('{') && instanceNameOf(name).has_value();
}

void addKey(const RegistryKey& parent, const std::string& name, std::vector<InstanceKey>& keys) {
    RegistryKey key;
    const RegistryResult code = parent.open(name, RegistryAccess::read, key);
    if (isKeyOfInstance(name) && !isGone(code)) {
        keys.push_back({name, kindOf(code, name), code});
    }
}

/// The names first: keys that come and go while they are opened would move the others.
RegistryResult keyNames(const RegistryKey& parent, std::vector<std::string>& names) {
    std::string name;
    for (std::uint32_t i = 0;; ++i) {
        const RegistryResult code = parent.keyName(i, name);
        if (code == result::noMoreItems || isGone(code)) {
            return result::success;
        }
        if (code != result::success) {
            return code;
        }
        names.push_back(name);
    }
}

}  // namespace

InstanceKeys listInstances() {
    InstanceKeys found;
    RegistryKey telemetry;
    RegistryKey parent;
    found.code = openBelowMachine(place::base, RegistryAccess::read, telemetry);
    found.hasTelemetry = found.code == result::success;
    if (found.hasTelemetry) {
        found.code = openBelowMachine(place::instances, RegistryAccess::read, parent);
    }
    std::vector<std::string> names;
    if (found.code == result::success) {
        found.code = keyNames(parent, names);
    }
    for (const std::string& name : names) {
        addKey(parent, name, found.keys);
    }
    found.code = isGone(found.code) ? result::success : found.code;
    return found;
}

std::optional<std::string> instanceNameOf(std::string_view text) {
    const bool hasBraces = text.size() == guidDigits + 2 && text.front() == '{' && text.back() == '}';
    const std::string_view inner = hasBraces ? text.substr(1, guidDigits) : text;
    std::string name = platform::guidText(platform::GuidFromText(inner));
    // Compared with what was read, since any other characters between the digits would have been skipped.
    for (std::size_t i = 0; i < guidDigits; ++i) {
        const char given = i < inner.size() ? inner[i] : '\0';
        const char lower = given >= 'A' && given <= 'F' ? static_cast<char>(given - 'A' + 'a') : given;
        if (inner.size() != guidDigits || lower != name[i + 1]) {
            return std::nullopt;
        }
    }
    return name;
}

bool isInstanceLive(const std::string& name) {
    return platform::isMutexHeld(mutexNameOf(name));
}

RegistryResult openInstance(const std::string& name, RegistryAccess access, RegistryKey& key) {
    return openBelowMachine(place::keyPath(name), access, key);
}

Removal removeStaleInstance(const std::string& name, RegistryResult& code) {
    RegistryKey key;
    code = openInstance(name, RegistryAccess::read, key);
    if (code == result::isLink) {
        return Removal::isLink;
    }
    RegistryKey parent;
    if (code == result::success) {
        code = openBelowMachine(place::instances, RegistryAccess::readWrite, parent);
    }
    if (isInstanceLive(name)) {
        return Removal::isLive;
    }
    if (code == result::success) {
        code = platform::deleteKeyTree(parent, name);  // which follows no link that somebody put there
    }
    if (code != result::success) {
        return isGone(code) ? Removal::gone : Removal::failed;
    }
    platform::removeAbandonedMutex(mutexNameOf(name));
    return Removal::removed;
}

}  // namespace korva::tool
