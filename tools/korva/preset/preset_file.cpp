#include "korva/preset/preset_file.h"

#include <utility>

#include "korva/errors.h"
#include "korva/preset/effect_class.h"
#include "korva/preset/preset_properties.h"
#include "korva/registry/registry_errors.h"
#include "korva/whole_file.h"
#include "params/property_set_path.h"

namespace korva::tool {
namespace {

/// The largest engine's parameters with the most bytes each, as digits, are less.
constexpr std::size_t maxPresetBytes = std::size_t{64} << 20;

}  // namespace

ReadPreset readPresetFile(const std::string& file) {
    return readPresetText(readWholeFile(file, maxPresetBytes));
}

Preset presetOfFile(const std::string& file) {
    ReadPreset read = readPresetFile(file);
    if (!read.preset) {
        fail("{}", faultText(inputName(file), read.faults.front()));
    }
    return std::move(*read.preset);
}

std::string userSetPath(const std::string& endpoint) {
    if (endpoint.empty()) {
        fail("--endpoint takes an endpoint's identifier, not ''");
    }
    std::string path = params::propertySetPath(endpoint, params::property_set::user);
    if (path.empty()) {
        fail("--endpoint takes an endpoint's identifier, which has no slashes or backslashes, not '{}'",
             endpoint);
    }
    return path;
}

void installPreset(const Preset& preset, const std::string& endpoint, params::EffectKind kind) {
    throwIfRefused(platform::applyRegistryChanges(presetChanges(preset, userSetPath(endpoint), kind)),
                   "install " + presetWords(endpoint, kind));
}

std::string presetWords(const std::string& endpoint, params::EffectKind kind) {
    return fmt::format("the {} preset of the endpoint '{}'", effectName(kind), endpoint);
}

}  // namespace korva::tool
