#include "korva/endpoint/endpoint_commands.h"

#include <array>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <system_error>

#include "korva/endpoint/endpoint_registry.h"
#include "korva/errors.h"
#include "korva/json.h"
#include "korva/preset/effect_class.h"
#include "korva/preset/stored_preset.h"
#include "korva/registry/registry_errors.h"
#include "korva/registry/value_json.h"
#include "korva/standard_streams.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

namespace published = korva::published;

constexpr std::array effects = {params::EffectKind::stream, params::EffectKind::mode,
                                params::EffectKind::endpoint};

const char* flowName(EDataFlow flow) {
    return flow == eCapture ? "capture" : "render";
}

const char* stateName(std::uint32_t state) {
    switch (state) {
        case published::deviceStateActive:
            return "active";
        case published::deviceStateDisabled:
            return "disabled";
        case published::deviceStateUnplugged:
            return "unplugged";
        default:
            return "not present";
    }
}

float volumeOf(const std::string& text) {
    float volume = 0.0F;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, volume);
    if (error != std::errc() || rest != end || !platform::isVolume(volume)) {
        fail("--volume takes a number from 0 to 1, not '{}'", text);
    }
    return volume;
}

/// The shortest decimal number that stands for the volume, rather than all digits of its bits.
double shortest(float volume) {
    return std::strtod(fmt::format("{}", volume).c_str(), nullptr);
}

Json descriptionJson(const EndpointDescription& endpoint) {
    return {{"id", platform::endpointIdOf(endpoint.place)}, {"flow", flowName(endpoint.place.flow)},
            {"state", stateName(endpoint.state)},           {"name", endpoint.name},
            {"volume", shortest(endpoint.loudness.scalar)}, {"muted", endpoint.loudness.isMuted}};
}

std::string volumeText(const platform::EndpointLoudness& loudness) {
    return fmt::format("{}{}", loudness.scalar, loudness.isMuted ? " muted" : "");
}

/// The name comes last, since it may be anything.
std::string descriptionLine(const EndpointDescription& endpoint) {
    return fmt::format("{}  {:<7}  {:<11}  {:<5}  {}\n", platform::endpointIdOf(endpoint.place),
                       flowName(endpoint.place.flow), stateName(endpoint.state),
                       volumeText(endpoint.loudness), asOneLine(endpoint.name));
}

/// The set that settings are read from; no key if it isn't there.
platform::RegistryKey openUserSet(const EndpointDescription& endpoint) {
    const std::string id = platform::endpointIdOf(endpoint.place);
    platform::RegistryKey key;
    const platform::RegistryResult code = platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                                              .open(params::propertySetPath(id, params::property_set::user),
                                                    platform::RegistryAccess::read, key);
    if (code != platform::registry_result::notFound) {
        throwIfRefused(code, fmt::format("read the presets of the endpoint '{}'", id));
    }
    return key;
}

/// Nothing also for settings that are no preset.
std::optional<Preset> presetOf(const platform::RegistryKey& userSet, params::EffectKind kind) {
    try {
        return userSet ? std::optional(readStoredPreset(userSet, kind)) : std::nullopt;
    } catch (const NoPreset&) {
        return std::nullopt;
    }
}

std::string showText(const EndpointDescription& endpoint) {
    std::string text = platform::endpointIdOf(endpoint.place) + "\n";
    text += fmt::format("  name    {}\n", asOneLine(endpoint.name));
    text += fmt::format("  flow    {}\n", flowName(endpoint.place.flow));
    text += fmt::format("  state   {}\n", stateName(endpoint.state));
    text += fmt::format("  volume  {}\n", volumeText(endpoint.loudness));
    const platform::RegistryKey userSet = openUserSet(endpoint);
    for (const params::EffectKind effect : effects) {
        const std::optional<Preset> preset = presetOf(userSet, effect);
        text += fmt::format("  {:<6}  {}\n", effectName(effect),
                            preset ? fmt::format("engine {}, preset version {}",
                                                 platform::guidText(preset->engineId), preset->presetVersion)
                                   : "no preset");
    }
    return text;
}

Json showJson(const EndpointDescription& endpoint) {
    Json json = descriptionJson(endpoint);
    const platform::RegistryKey userSet = openUserSet(endpoint);
    for (const params::EffectKind effect : effects) {
        const std::optional<Preset> preset = presetOf(userSet, effect);
        json["presets"][std::string(effectName(effect))] =
            preset ? Json{{"engine", platform::guidText(preset->engineId)},
                          {"presetVersion", preset->presetVersion}}
                   : Json();
    }
    return json;
}

}  // namespace

int runEndpointAdd(const EndpointOptions& options) {
    NewEndpoint endpoint{
        .name = options.name, .flow = options.capture ? eCapture : eRender, .isActive = !options.inactive};
    if (options.hasVolume) {
        endpoint.volume = volumeOf(options.volume);
    }
    const std::string id = makeEndpoint(endpoint);
    if (options.json) {
        printOutput(jsonLine(descriptionJson(readEndpoint(placeOfId(id)))));
    } else {
        printOutput(fmt::format("Added the {} endpoint {}, {}, at volume {}:\n{}\n", flowName(endpoint.flow),
                                asOneLine(endpoint.name), endpoint.isActive ? "active" : "disabled",
                                endpoint.volume, id));
    }
    return 0;
}

int runEndpointList(const EndpointOptions& options) {
    const std::vector<EndpointDescription> all = readAllEndpoints();
    Json json = Json::array();
    std::string text;
    for (const EndpointDescription& endpoint : all) {
        json.push_back(descriptionJson(endpoint));
        text += descriptionLine(endpoint);
    }
    printOutput(options.json ? jsonLine(json) : text);
    return 0;
}

int runEndpointShow(const EndpointOptions& options) {
    const EndpointDescription endpoint = readEndpoint(placeOfId(options.id));
    printOutput(options.json ? jsonLine(showJson(endpoint)) : showText(endpoint));
    return 0;
}

int runEndpointSet(const EndpointOptions& options) {
    EndpointChange change;
    if (options.hasName) {
        change.name = options.name;
    }
    if (options.hasVolume) {
        change.volume = volumeOf(options.volume);
    }
    if (options.active || options.inactive) {
        change.isActive = options.active;
    }
    if (!change.name && !change.volume && !change.isActive) {
        fail("nothing to set: give --name, --volume, --active or --inactive");
    }
    const platform::EndpointPlace place = placeOfId(options.id);
    changeEndpoint(place, change);
    const EndpointDescription now = readEndpoint(place);
    printOutput(options.json ? jsonLine(descriptionJson(now)) : descriptionLine(now));
    return 0;
}

int runEndpointRemove(const EndpointOptions& options) {
    const EndpointDescription endpoint = readEndpoint(placeOfId(options.id));
    removeEndpoint(endpoint.place);
    if (options.json) {
        printOutput(jsonLine({{"id", platform::endpointIdOf(endpoint.place)}, {"name", endpoint.name}}));
    } else {
        printOutput(fmt::format("Removed {} and its presets: {}\n", platform::endpointIdOf(endpoint.place),
                                asOneLine(endpoint.name)));
    }
    return 0;
}

}  // namespace korva::tool
