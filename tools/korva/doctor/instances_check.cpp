#include "korva/doctor/instances_check.h"

#include <fmt/core.h>

#include <algorithm>
#include <cstddef>

#include "korva/doctor/link_remedy.h"
#include "korva/registry/registry_errors.h"
#include "services/instance_key.h"

namespace korva::tool {
namespace {

std::ptrdiff_t countOf(const std::vector<InstanceKey>& keys, InstanceKey::Kind kind) {
    return std::ranges::count(keys, kind, &InstanceKey::kind);
}

}  // namespace

Findings instanceFindings(const std::vector<InstanceKey>& keys) {
    Findings findings;
    if (const auto stale = countOf(keys, InstanceKey::Kind::stale); stale != 0) {
        findings.push_back({Subject::instances, Severity::fault,
                            stale == 1 ? "An audio object left its key behind."
                                       : fmt::format("{} audio objects left their keys behind.", stale),
                            "Their process was killed, or crashed, before they could end.",
                            "korva monitor --sweep"});
    }
    for (const InstanceKey& key : keys) {
        if (key.kind == InstanceKey::Kind::link) {
            const std::string path = services::instance_place::keyPath(key.name);
            findings.push_back({Subject::instances, Severity::remark,
                                fmt::format("The key of an instance is a link: {}.", key.name),
                                linkCause(path), ""});
        } else if (key.kind == InstanceKey::Kind::unreadable) {
            findings.push_back({Subject::instances, Severity::remark,
                                fmt::format("The key of an instance can't be read: {}.", key.name),
                                fmt::format("The reason: {}.", registryMessage(key.code)), ""});
        }
    }
    return findings;
}

Findings checkInstances() {
    const InstanceKeys found = listInstances();
    if (found.code != platform::registry_result::isLink) {
        throwIfRefused(found.code, "list the instances");
    }
    return instanceFindings(found.keys);
}

}  // namespace korva::tool
