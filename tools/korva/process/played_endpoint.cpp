#include "korva/process/played_endpoint.h"

#include <chrono>
#include <vector>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/preset/preset_file.h"
#include "korva/preset/preset_properties.h"
#include "platform/property_key.h"

namespace korva::tool {

using std::chrono::steady_clock;

namespace {

constexpr std::size_t spareRounds = 5;
constexpr int pauseMs = 1;

/// The properties that a preset sets, that which selects it last.
std::vector<PROPERTYKEY> keysOf(const Preset& preset, const std::string& endpoint, params::EffectKind kind) {
    std::vector<PROPERTYKEY> keys;
    for (const platform::RegistryChange& change : presetChanges(preset, userSetPath(endpoint), kind)) {
        if (change.kind == platform::RegistryChange::Kind::setValue) {
            keys.push_back(platform::TextToKey(change.name));
        }
    }
    return keys;
}

double milliseconds(steady_clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

}  // namespace

PlayedEndpoint::PlayedEndpoint(const std::string& endpoint, const std::string& presetFile,
                               params::EffectKind kind)
    : effect(kind), identifier(endpoint) {
    if (!presetFile.empty()) {
        const Preset preset = presetOfFile(presetFile);
        own = std::make_unique<const TemporaryEndpoint>("korva process");
        identifier = own->id();
        installPreset(preset, identifier, effect);
    }
    if (identifier.empty()) {
        return;
    }
    found = findEndpoint(identifier);
    if (!found) {
        fail("there is no endpoint '{}'; 'korva endpoint list' shows those there are", identifier);
    }
}

ChangeTimes PlayedEndpoint::changePreset(AudioObject& object, const Preset& preset) const {
    const auto begin = steady_clock::now();
    installPreset(preset, identifier, effect);
    const auto installed = steady_clock::now();
    const std::vector<PROPERTYKEY> keys = keysOf(preset, identifier, effect);
    for (const PROPERTYKEY& key : keys) {
        object.notifyEffectProperty(key);
    }
    for (std::size_t round = 0; round < keys.size() + spareRounds; ++round) {
        pauseFor(pauseMs);
        object.reset();
    }
    return {milliseconds(installed - begin), milliseconds(steady_clock::now() - installed)};
}

}  // namespace korva::tool
