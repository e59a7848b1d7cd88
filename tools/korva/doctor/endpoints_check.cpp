#include "korva/doctor/endpoints_check.h"

#include <fmt/core.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <utility>

#include "korva/doctor/effect_check.h"
#include "korva/doctor/link_remedy.h"
#include "korva/monitor/refresh.h"
#include "korva/registry/registry_errors.h"
#include "params/property_set_path.h"
#include "platform/endpoint_values.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryRoot;
using platform::RegistryValue;
namespace result = platform::registry_result;

bool isGone(RegistryResult code) {
    return code == result::notFound || code == result::keyDeleted;
}

/// Of all values whose names are those of properties.
std::vector<PROPERTYKEY> propertyKeys(const RegistryKey& set) {
    constexpr std::size_t longestName = std::size_t{4} * 16384;
    std::vector<PROPERTYKEY> keys;
    std::string name;
    for (std::uint32_t i = 0;; ++i) {
        const RegistryResult code = set.valueName(i, longestName, name);
        if (code == result::noMoreItems || isGone(code)) {
            return keys;
        }
        throwIfRefused(code, "list the properties of an endpoint");
        if (const PROPERTYKEY key = platform::TextToKey(name); platform::isValidKey(key)) {
            keys.push_back(key);
        }
    }
}

std::optional<RegistryValue> readProperty(const RegistryKey& set, const PROPERTYKEY& key) {
    RegistryValue value;
    const RegistryResult code = set.readValue(platform::KeyToText(key), value);
    if (isGone(code)) {
        return std::nullopt;
    }
    throwIfRefused(code, "read a property of an endpoint");
    return value;
}

void addEffects(const SetEndpoint& endpoint, const RegistryKey& set, EndpointsReport& report) {
    const std::vector<PROPERTYKEY> keys = propertyKeys(set);
    bool isSelected = false;
    for (const params::EffectKind kind :
         {params::EffectKind::stream, params::EffectKind::mode, params::EffectKind::endpoint}) {
        const EffectPlace place{endpoint.id, endpoint.name, kind};
        EffectReport effect = examineEffect(
            place, [&](const PROPERTYKEY& key) { return readProperty(set, key); }, keys);
        isSelected = isSelected || effect.isSelected;
        std::ranges::move(effect.findings, std::back_inserter(report.findings));
        for (const std::string& module : effect.modules) {
            report.modules.emplace(module, effectWords(place));
        }
    }
    if (isSelected) {
        report.endpoints.push_back(endpoint);
    }
}

Finding linkedSet(const SetEndpoint& endpoint, const std::string& path) {
    return {Subject::endpoints, Severity::fault,
            fmt::format("The settings of \"{}\" are not read.",
                        endpoint.name.empty() ? endpoint.id : endpoint.name),
            linkCause(path), linkRemedy(path)};
}

void addEndpoint(const RegistryKey& machine, const SetEndpoint& endpoint, EndpointsReport& report) {
    const std::string path = params::propertySetPath(endpoint.id, params::property_set::user);
    RegistryKey set;
    const RegistryResult code = machine.open(path, RegistryAccess::read, set);
    if (code == result::isLink) {
        report.findings.push_back(linkedSet(endpoint, path));
    } else if (!isGone(code)) {
        throwIfRefused(code, "read the properties of an endpoint");
        addEffects(endpoint, set, report);
    }
}

}  // namespace

EndpointsReport checkEndpoints() {
    RegistryResult code = result::success;
    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine, &code);
    throwIfRefused(code, "list the endpoints");
    EndpointsReport report;
    for (const EDataFlow flow : {eRender, eCapture}) {
        std::vector<platform::EndpointPlace> places;
        throwIfRefused(platform::readEndpoints(machine, flow, places), "list the endpoints");
        for (const platform::EndpointPlace& place : places) {
            const std::string id = platform::endpointIdOf(place);
            addEndpoint(machine, {id, endpointNameOf(id)}, report);
        }
    }
    return report;
}

}  // namespace korva::tool
