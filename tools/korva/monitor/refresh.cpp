#include "korva/monitor/refresh.h"

#include <utility>

#include "platform/endpoint_place.h"
#include "platform/property_key.h"
#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/registry_values.h"
#include "platform/unicode.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
namespace result = platform::registry_result;

constexpr auto counterPeriod = std::chrono::seconds(1);

bool isGone(RegistryResult code) {
    return code == result::notFound || code == result::keyDeleted;
}

RegistryResult askForCounters(const RegistryKey& key) {
    std::uint32_t written = 0;
    RegistryResult code = result::success;
    for (const Request& request : allRequests()) {
        if (code == result::success && request.value != levelRequest) {
            code = ask(key, request.value, written);
        }
    }
    return code;
}

}  // namespace

InstanceWatcher::InstanceWatcher(std::optional<std::string> onlyInstance) : only(std::move(onlyInstance)) {}

Refresh InstanceWatcher::refresh(Time now) {
    const InstanceKeys found = listInstances();
    Refresh refreshed{.code = found.code, .hasTelemetry = found.hasTelemetry};
    for (auto& [name, instance] : watched) {
        instance->isSeen = false;
    }
    for (const InstanceKey& key : found.keys) {
        if (!only || instanceNameOf(key.name) == only) {
            look(key, refreshed, now);
        }
    }
    std::erase_if(watched, [](const auto& entry) { return !entry.second->isSeen; });
    return refreshed;
}

void InstanceWatcher::look(const InstanceKey& found, Refresh& refreshed, Time now) {
    if (found.kind != InstanceKey::Kind::live) {
        refreshed.others.push_back(found);
        return;
    }
    RegistryKey key;
    InstanceView view;
    RegistryResult code = openInstance(found.name, RegistryAccess::read, key);
    code = code == result::success ? readInstance(key, found.name, view) : code;
    if (code != result::success) {
        if (!isGone(code)) {
            refreshed.others.push_back({found.name, InstanceKey::Kind::unreadable, code});
        }
        return;
    }
    view.endpointName = endpointNameOf(view.endpointId.value.value_or(""));
    refreshed.instances.push_back(std::move(view));
    code = askAnew(found.name, now);
    if (code != result::success && !isGone(code)) {
        refreshed.askCode = code;
    }
}

RegistryResult InstanceWatcher::askAnew(const std::string& name, Time now) {
    std::unique_ptr<Watched>& instance = watched[name];
    RegistryResult code = result::success;
    if (instance == nullptr) {
        RegistryKey writable;
        code = openInstance(name, RegistryAccess::readWrite, writable);
        instance = std::make_unique<Watched>(std::move(writable));
    }
    instance->isSeen = true;
    if (code == result::success &&
        (!instance->lastCounters || now - *instance->lastCounters >= counterPeriod)) {
        instance->lastCounters = now;
        code = askForCounters(instance->key);
    }
    code = code == result::success ? instance->levels.ask() : code;
    if (code != result::success) {
        // Perhaps the key was made again under its name, or may be written later.
        watched.erase(name);
    }
    return code;
}

std::string endpointNameOf(const std::string& endpointId) {
    const std::optional<platform::EndpointPlace> place = platform::endpointPlaceOf(endpointId);
    if (!place) {
        return {};
    }
    const std::string path =
        platform::endpointPath(*place) + "\\" + std::string(platform::endpointPropertiesKey);
    RegistryKey properties;
    static_cast<void>(
        RegistryKey::root(platform::RegistryRoot::localMachine).open(path, RegistryAccess::read, properties));
    platform::RegistryValue stored;
    platform::PropertyValue value;
    const bool isText = properties.readValue(platform::KeyToText(platform::endpointFriendlyName), stored) ==
                            result::success &&
                        platform::variantOf(stored, *value.out()) == published::ok && value->vt == VT_LPWSTR;
    return isText ? platform::toUtf8(value->pwszVal) : "";
}

}  // namespace korva::tool
