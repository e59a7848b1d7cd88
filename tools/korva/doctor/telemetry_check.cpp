#include "korva/doctor/telemetry_check.h"

#include <fmt/core.h>

#include "korva/doctor/link_remedy.h"
#include "korva/registry/registry_errors.h"
#include "params/effects_store_provider.h"
#include "params/property_set_path.h"
#include "services/instance_key.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
using platform::RegistryResult;
using platform::RegistryRoot;
namespace result = platform::registry_result;

/// A finding if the key is a link, or if it is missing and that is a fault.
void addKey(const OpenedKey& key, const std::string& what, const std::string& missingCause,
            Findings& findings) {
    if (key.code == result::isLink) {
        findings.push_back(
            {Subject::telemetry, Severity::fault, what, linkCause(key.path), linkRemedy(key.path)});
    } else if (key.code == result::notFound && !missingCause.empty()) {
        findings.push_back(
            {Subject::telemetry, Severity::fault, what, missingCause, makeKeyRemedy(key.path)});
    }
}

OpenedKey opened(const RegistryKey& machine, std::string path) {
    RegistryKey key;
    RegistryResult code = machine.open(path, RegistryAccess::read, key);
    code = code == result::keyDeleted ? result::notFound : code;
    if (code != result::notFound && code != result::isLink) {
        throwIfRefused(code, fmt::format("open the key 'HKLM\\{}'", path));
    }
    return {std::move(path), code};
}

}  // namespace

Findings telemetryFindings(const TelemetryFacts& facts) {
    Findings findings;
    const std::string nobodyShows = "No audio object can show itself to 'korva monitor' and other tools.";
    addKey(facts.base, nobodyShows,
           fmt::format("There is no key 'HKLM\\{}', which an installer makes.", facts.base.path), findings);
    // Below it objects make what is missing themselves.
    addKey(facts.instances, nobodyShows, "", findings);
    for (const auto& [endpoint, key] : facts.volatileSets) {
        addKey(key,
               fmt::format("The values of objects on \"{}\" are not shown.",
                           endpoint.name.empty() ? endpoint.id : endpoint.name),
               "The endpoint has no volatile set of properties, to which they go first.", findings);
    }
    return findings;
}

Findings checkTelemetry(const std::vector<SetEndpoint>& endpoints) {
    RegistryResult code = result::success;
    const RegistryKey machine = RegistryKey::root(RegistryRoot::localMachine, &code);
    throwIfRefused(code, "look for the instances");
    TelemetryFacts facts;
    facts.base = opened(machine, std::string(services::instance_place::base));
    facts.instances = opened(machine, std::string(services::instance_place::instances));
    if (!params::systemSuppliesEffectStores()) {
        for (const SetEndpoint& endpoint : endpoints) {
            facts.volatileSets.push_back(
                {endpoint,
                 opened(machine, params::propertySetPath(endpoint.id, params::property_set::temporary))});
        }
    }
    return telemetryFindings(facts);
}

}  // namespace korva::tool
