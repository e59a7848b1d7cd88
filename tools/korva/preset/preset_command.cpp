#include "korva/preset/preset_command.h"

#include "korva/errors.h"
#include "korva/json.h"
#include "korva/preset/effect_class.h"
#include "korva/preset/preset_file.h"
#include "korva/preset/preset_properties.h"
#include "korva/preset/preset_text.h"
#include "korva/preset/stored_preset.h"
#include "korva/registry/registry_errors.h"
#include "korva/standard_streams.h"
#include "korva/whole_file.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

using platform::RegistryKey;

/// File names may be any bytes; those that are no text are replaced.
std::string lineOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

params::EffectKind effectOf(const PresetOptions& options) {
    const std::optional<params::EffectKind> kind = effectOfName(options.effect);
    if (!kind) {
        fail("--effect takes sfx, mfx or efx, not '{}'", options.effect);
    }
    return *kind;
}

std::string summaryText(const Preset& preset) {
    const PresetExtent extent = extentOf(preset);
    return fmt::format("engine {}, {} parameter{} set, {} chunks, {} bytes",
                       platform::guidText(preset.engineId), preset.parameters.size(),
                       preset.parameters.size() == 1 ? "" : "s", extent.chunks, extent.bytes);
}

void addSummary(Json& json, const Preset& preset) {
    const PresetExtent extent = extentOf(preset);
    json["engine"] = platform::guidText(preset.engineId);
    json["presetVersion"] = preset.presetVersion;
    json["hardware"] = preset.hardware;
    json["parametersSet"] = preset.parameters.size();
    json["chunks"] = extent.chunks;
    json["bytes"] = extent.bytes;
}

Json faultJson(const TextFault& fault) {
    Json json = {{"message", fault.message}};
    if (fault.line != 0) {
        json["line"] = fault.line;
        json["column"] = fault.column;
    } else {
        json["place"] = fault.place;
    }
    return json;
}

std::string checkText(const std::string& name, const ReadPreset& read) {
    if (read.preset) {
        return asOneLine(name) + ": " + summaryText(*read.preset) + "\n";
    }
    std::string text;
    for (const TextFault& fault : read.faults) {
        text += asOneLine(faultText(name, fault)) + "\n";
    }
    return text;
}

std::string checkJson(const std::string& name, const ReadPreset& read) {
    Json json = {{"file", name}, {"faults", Json::array()}};
    for (const TextFault& fault : read.faults) {
        json["faults"].push_back(faultJson(fault));
    }
    if (read.preset) {
        addSummary(json, *read.preset);
    }
    return lineOf(json);
}

void printInstalled(const PresetOptions& options, const Preset& preset) {
    if (options.json) {
        Json json = {
            {"file", inputName(options.file)}, {"endpoint", options.endpoint}, {"effect", options.effect}};
        addSummary(json, preset);
        printOutput(lineOf(json));
    } else if (!options.quiet) {
        printOutput(fmt::format("Installed {} as the {} preset of {}: {}\n",
                                asOneLine(inputName(options.file)), options.effect,
                                asOneLine(options.endpoint), summaryText(preset)));
    }
}

RegistryKey openSet(const std::string& endpoint, params::EffectKind kind) {
    const std::string path = userSetPath(endpoint);
    const std::string action = "read " + presetWords(endpoint, kind);
    platform::RegistryResult code = platform::registry_result::success;
    const RegistryKey root = RegistryKey::root(platform::RegistryRoot::localMachine, &code);
    throwIfRefused(code, action);
    RegistryKey key;
    code = root.open(path, platform::RegistryAccess::read, key);
    if (code == platform::registry_result::notFound) {
        fail("the endpoint '{}' has no presets; 'korva preset install' makes one", endpoint);
    }
    throwIfRefused(code, action);
    return key;
}

}  // namespace

int runPresetCheck(const PresetOptions& options) {
    const ReadPreset read = readPresetFile(options.file);
    const std::string name = inputName(options.file);
    printOutput(options.json ? checkJson(name, read) : checkText(name, read));
    return read.preset ? 0 : 1;
}

int runPresetInstall(const PresetOptions& options) {
    const params::EffectKind kind = effectOf(options);
    static_cast<void>(userSetPath(options.endpoint));  // before the file is asked for
    const Preset preset = presetOfFile(options.file);
    installPreset(preset, options.endpoint, kind);
    printInstalled(options, preset);
    return 0;
}

int runPresetDump(const PresetOptions& options) {
    const params::EffectKind kind = effectOf(options);
    try {
        printOutput(presetText(readStoredPreset(openSet(options.endpoint, kind), kind)));
    } catch (const NoPreset& reason) {
        fail("{} can't be dumped: {}", presetWords(options.endpoint, kind), reason.what());
    }
    return 0;
}

}  // namespace korva::tool
