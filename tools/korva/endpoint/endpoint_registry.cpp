#include "korva/endpoint/endpoint_registry.h"

#include <span>
#include <utility>

#include "korva/errors.h"
#include "korva/registry/registry_errors.h"
#include "params/property_set_path.h"
#include "platform/new_guid.h"
#include "platform/property_key.h"
#include "platform/property_value.h"
#include "platform/published/results.h"
#include "platform/registry_values.h"

namespace korva::tool {
namespace {

using platform::EndpointPlace;
using platform::RegistryAccess;
using platform::RegistryChange;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryValue;
namespace result = platform::registry_result;
namespace published = korva::published;

/// Live instances look for this key, and make what is theirs below it.
constexpr const char* telemetryPath = "Software\\Kestrelwright";

RegistryKey openMachine() {
    RegistryResult code = result::success;
    RegistryKey machine = RegistryKey::root(platform::RegistryRoot::localMachine, &code);
    throwIfRefused(code, "open the registry");
    return machine;
}

[[noreturn]] void failOnUnknown(std::string_view id) {
    fail("there is no endpoint '{}' in the registry '{}'; 'korva endpoint list' shows those that are there",
         id, platform::registryPlace());
}

std::string actionOn(const char* verb, const EndpointPlace& place) {
    return fmt::format("{} the endpoint '{}'", verb, platform::endpointIdOf(place));
}

/// An endpoint that goes meanwhile is as unknown as one that never was.
void throwUnlessDone(RegistryResult code, const char* verb, const EndpointPlace& place) {
    if (code == result::notFound || code == result::keyDeleted) {
        failOnUnknown(platform::endpointIdOf(place));
    }
    throwIfRefused(code, actionOn(verb, place));
}

RegistryKey openEndpoint(const EndpointPlace& place, RegistryAccess access, const char* verb) {
    RegistryKey key;
    throwUnlessDone(openMachine().open(platform::endpointPath(place), access, key), verb, place);
    return key;
}

/// No two endpoints of any machine have the same.
GUID unusedGuid() {
    const GUID guid = platform::newGuid();
    if (guid == GUID{}) {
        fail("the system gives no random numbers to name an endpoint with");
    }
    return guid;
}

RegistryValue nameValue(const std::string& name) {
    const std::optional<platform::WideString> wide = platform::exactWide(name);
    if (!wide) {
        fail("the name '{}' is not UTF-8", name);
    }
    if (wide->empty()) {
        fail("an endpoint's name can't be empty");
    }
    const auto bytes = std::as_bytes(std::span(wide->c_str(), wide->size() + 1));
    return {platform::registry_type::string, {bytes.begin(), bytes.end()}};
}

RegistryValue stateValue(bool isActive) {
    return platform::numberValue(isActive ? published::deviceStateActive : published::deviceStateDisabled);
}

RegistryValue checkedVolumeValue(float volume) {
    if (!platform::isVolume(volume)) {
        fail("a volume is from 0 to 1, not {}", volume);
    }
    return platform::volumeValue(volume);
}

RegistryChange keyChange(RegistryChange::Kind kind, std::string path) {
    return {.kind = kind, .path = std::move(path)};
}

RegistryChange valueChange(std::string path, std::string_view name, RegistryValue value) {
    return {.kind = RegistryChange::Kind::setValue,
            .path = std::move(path),
            .name = std::string(name),
            .value = std::move(value)};
}

/// Users know it by the one, some programs by the other.
std::vector<PROPERTYKEY> nameProperties() {
    return {platform::endpointFriendlyName, platform::endpointDescription};
}

std::string nameOf(const RegistryKey& endpoint) {
    RegistryKey properties;
    RegistryValue stored;
    platform::PropertyValue value;
    const bool isThere =
        endpoint.open(platform::endpointPropertiesKey, RegistryAccess::read, properties) == 0 &&
        properties.readValue(platform::KeyToText(platform::endpointFriendlyName), stored) == 0;
    if (!isThere || platform::variantOf(stored, *value.out()) != published::ok || value->vt != VT_LPWSTR) {
        return {};
    }
    return platform::toUtf8(value->pwszVal);
}

RegistryResult describe(const RegistryKey& machine, EndpointDescription& description) {
    RegistryKey key;
    RegistryResult code = machine.open(platform::endpointPath(description.place), RegistryAccess::read, key);
    if (code == result::success) {
        code = platform::readEndpointState(key, description.state);
    }
    if (code == result::success) {
        code = platform::readEndpointLoudness(key, description.loudness);
    }
    if (code == result::success) {
        description.name = nameOf(key);
    }
    return code;
}

void setName(const RegistryKey& endpoint, const EndpointPlace& place, const RegistryValue& name) {
    RegistryKey properties;
    throwUnlessDone(endpoint.create(platform::endpointPropertiesKey, RegistryAccess::readWrite, properties),
                    "change", place);
    for (const PROPERTYKEY& property : nameProperties()) {
        throwUnlessDone(properties.setValue(platform::KeyToText(property), name.type, name.data), "change",
                        place);
    }
}

}  // namespace

std::string makeEndpoint(const NewEndpoint& endpoint) {
    using Kind = RegistryChange::Kind;
    const EndpointPlace place{endpoint.flow, unusedGuid()};
    const std::string id = platform::endpointIdOf(place);
    const std::string path = platform::endpointPath(place);
    const std::string properties = path + "\\" + std::string(platform::endpointPropertiesKey);
    const RegistryValue name = nameValue(endpoint.name);

    std::vector<RegistryChange> changes{keyChange(Kind::createKey, telemetryPath)};
    for (const std::string_view set :
         {params::property_set::standard, params::property_set::user, params::property_set::temporary}) {
        changes.push_back(keyChange(Kind::createKey, params::propertySetPath(id, set)));
    }
    for (const PROPERTYKEY& property : nameProperties()) {
        changes.push_back(valueChange(properties, platform::KeyToText(property), name));
    }
    changes.push_back(
        valueChange(path, platform::endpoint_value::volume, checkedVolumeValue(endpoint.volume)));
    // What makes a device of it comes last, for a registry that shows one step after another.
    changes.push_back(valueChange(path, platform::endpoint_value::state, stateValue(endpoint.isActive)));
    throwIfRefused(platform::applyRegistryChanges(changes), "add an endpoint");
    return id;
}

// Through the open key: a change of the path would make an endpoint anew that somebody removes just now.
void changeEndpoint(const EndpointPlace& place, const EndpointChange& change) {
    const std::optional<RegistryValue> name =
        change.name ? std::optional(nameValue(*change.name)) : std::nullopt;
    const std::optional<RegistryValue> volume =
        change.volume ? std::optional(checkedVolumeValue(*change.volume)) : std::nullopt;
    const RegistryKey key = openEndpoint(place, RegistryAccess::readWrite, "change");
    if (name) {
        setName(key, place, *name);
    }
    if (volume) {
        throwUnlessDone(key.setValue(platform::endpoint_value::volume, volume->type, volume->data), "change",
                        place);
    }
    // Last: an endpoint that becomes active has its volume by then.
    if (change.isActive) {
        const RegistryValue state = stateValue(*change.isActive);
        throwUnlessDone(key.setValue(platform::endpoint_value::state, state.type, state.data), "change",
                        place);
    }
}

void removeEndpoint(const EndpointPlace& place) {
    using Kind = RegistryChange::Kind;
    static_cast<void>(openEndpoint(place, RegistryAccess::read, "remove"));
    const std::vector<RegistryChange> changes{
        keyChange(Kind::deleteTree, platform::endpointPath(place)),
        keyChange(Kind::deleteTree, params::propertySetsPath(platform::endpointIdOf(place)))};
    throwIfRefused(platform::applyRegistryChanges(changes), actionOn("remove", place));
}

std::vector<EndpointDescription> readAllEndpoints() {
    const RegistryKey machine = openMachine();
    std::vector<EndpointDescription> all;
    for (const EDataFlow flow : {eRender, eCapture}) {
        std::vector<EndpointPlace> places;
        throwIfRefused(platform::readEndpoints(machine, flow, places), "list the endpoints");
        for (const EndpointPlace& place : places) {
            EndpointDescription description{.place = place};
            const RegistryResult code = describe(machine, description);
            // One that goes meanwhile is left out.
            if (code != result::notFound && code != result::keyDeleted) {
                throwIfRefused(code, actionOn("read", place));
                all.push_back(std::move(description));
            }
        }
    }
    return all;
}

EndpointDescription readEndpoint(const EndpointPlace& place) {
    EndpointDescription description{.place = place};
    throwUnlessDone(describe(openMachine(), description), "read", place);
    return description;
}

EndpointPlace placeOfId(std::string_view id) {
    const std::optional<EndpointPlace> place = platform::endpointPlaceOf(id);
    if (!place) {
        failOnUnknown(id);
    }
    return *place;
}

}  // namespace korva::tool
