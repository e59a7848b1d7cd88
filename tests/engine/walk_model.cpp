#include "tests/engine/walk_model.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <span>

#include "params/effect_keys.h"
#include "platform/ordinal_case.h"
#include "platform/property_key.h"
#include "platform/unicode.h"
#include "tests/support/engines.h"

namespace korva::test {

namespace type = platform::registry_type;
using platform::RegistryValue;

namespace {

constexpr PROPERTYKEY selection = params::selectionKey(params::EffectKind::mode);
constexpr ParameterName effectsDisabled{-1, -18};
constexpr ParameterName volumeName{4, 24};

bool isZero(const GUID& guid) {
    return guid == GUID{};
}

template <class T>
Bytes bytesOf(const T& plain) {
    const auto bytes = std::as_bytes(std::span(&plain, 1));
    return {bytes.begin(), bytes.end()};
}

template <class T>
T fourBytes(const Bytes& bytes) {
    T plain{};
    if (bytes.size() == sizeof plain) {
        std::memcpy(&plain, bytes.data(), sizeof plain);
    }
    return plain;
}

std::uint32_t word(const Bytes& bytes, std::size_t at) {
    return std::to_integer<std::uint32_t>(bytes[at]) | std::to_integer<std::uint32_t>(bytes[at + 1]) << 8;
}

float decibels(float scalar) {
    const float level = 20.0f * std::log10(scalar);
    return level > -130.0f ? level : -130.0f;
}

ModelChunks chunksOf(const GUID& engine) {
    ModelChunks chunks;
    const auto set = params::BuildParameterSet(engine);
    for (const params::PresetChunk& planned : set->chunks()) {
        auto& chunk = chunks.emplace_back();
        for (std::size_t at = 0; at < planned.parameters.size(); ++at) {
            const params::Parameter& parameter = *planned.parameters[at];
            const auto payload = parameter.CatalogueValue.value().bytes();
            chunk.push_back({{static_cast<std::int32_t>(parameter.moduleIndex), parameter.paramId},
                             parameter.sourcePolicy,
                             planned.sizes[at],
                             {payload.begin(), payload.end()},
                             {}});
        }
    }
    return chunks;
}

/// The module that an engine has on a platform; empty for none.
std::string moduleOf(const ModelDocument& document) {
    if (document.engineId == firstEngine) {
        return document.isHardware ? "DRIVOL64" : "TANMER64";
    }
    return document.engineId == thirdEngine && !document.isHardware ? "PELLUX64" : "";
}

}  // namespace

WalkModel::WalkModel() {
    for (const GUID& known : {firstEngine, secondEngine, thirdEngine}) {
        layouts[platform::guidText(known)] = chunksOf(known);
    }
}

const std::vector<ModelParameter>* WalkModel::chunkOf(const GUID& ofEngine, std::size_t index) const {
    const auto layout = layouts.find(platform::guidText(ofEngine));
    return layout == layouts.end() || index >= layout->second.size() ? nullptr : &layout->second[index];
}

// Reading -----------------------------------------------------------------------------------------------

const PropertyValues* WalkModel::readable() const {
    if (store.kind == Store::Kind::replacement) {
        return &replacement;
    }
    if (store.kind == Store::Kind::none) {
        return nullptr;
    }
    const PropertySet& set = userSets.at(store.endpoint);
    return set.exists && set.generation == store.generation ? &set.values : nullptr;
}

const RegistryValue* WalkModel::value(REFPROPERTYKEY key) const {
    const PropertyValues* const values = readable();
    if (values == nullptr) {
        return nullptr;
    }
    const auto found = values->find(platform::KeyToText(key));
    return found == values->end() ? nullptr : &found->second;
}

std::optional<std::string> WalkModel::text(REFPROPERTYKEY key) const {
    const RegistryValue* const found = value(key);
    if (found == nullptr || found->type != type::string) {
        return std::nullopt;
    }
    std::string ascii;
    for (std::size_t at = 0; at + 1 < found->data.size() && word(found->data, at) != 0; at += 2) {
        ascii += static_cast<char>(word(found->data, at));
    }
    return ascii;
}

std::uint32_t WalkModel::number(REFPROPERTYKEY key) const {
    const RegistryValue* const found = value(key);
    return found != nullptr && found->type == type::dword ? fourBytes<std::uint32_t>(found->data) : 0;
}

// Each zero unit ends a string.
bool WalkModel::readClients() const {
    const RegistryValue* const found = value(params::clientListKey);
    if (found == nullptr || found->type != type::multiString || found->data.size() % 2 != 0) {
        return false;
    }
    for (std::size_t at = 0; at < found->data.size(); at += 2) {
        if (word(found->data, at) == 0) {
            return true;
        }
    }
    return false;
}

// The endpoint ------------------------------------------------------------------------------------------

void WalkModel::setEndpoint(const std::string& id) {
    if (id == endpoint) {
        return;
    }
    endpoint = id;
    const auto device = devices.find(id);
    const bool hadDevice = hasDevice;
    hasDevice = device != devices.end();
    deviceHasVolume = hasDevice && device->second.isActive && device->second.hasVolume;
    const bool wasActive = isActive();
    const bool hadStoreOfItsOwn = !isReplaced;
    chooseStore(hasDevice || hadDevice);
    // A store of someone else's stays, and the engine with it; it hears of the other volume.
    if (!hadStoreOfItsOwn && wasActive && deviceHasVolume) {
        readVolume();
        sendVolume();
    }
}

void WalkModel::setReplaced(bool replaced) {
    if (replaced != isReplaced) {
        isReplaced = replaced;
        chooseStore(true);
    }
}

// A store that is the same as before changes nothing below it.
void WalkModel::chooseStore(bool isOtherDevice) {
    const Store::Kind before = store.kind;
    if (isReplaced) {
        store = {Store::Kind::replacement, {}, 0};
        if (before == Store::Kind::replacement) {
            return;
        }
    } else {
        const auto set = userSets.find(endpoint);
        const bool isThere = hasDevice && set != userSets.end() && set->second.exists;
        store = isThere ? Store{Store::Kind::registry, endpoint, set->second.generation} : Store{};
        if (!isOtherDevice) {
            return;
        }
    }
    const bool hadClients = hasClients;
    hasClients = readClients();
    takeEffect(platform::GuidFromText(text(selection).value_or("")));
    // The list may follow the engine: a new one may have been told of the clients of the store before.
    if (isBuilt) {
        engine->mayBeAwake = engine->mayBeAwake || hadClients;
    }
}

// All that is known of an effect is read as its identity or the store changes, and only then.
void WalkModel::takeEffect(const GUID& id) {
    teardown();
    fxId = id;
    const bool isSet = !isZero(fxId);
    presetVersion = isSet ? number({fxId, 0}) : 0;
    modeFlags = isSet ? number({fxId, 1}) & ~2U : 0;
    engineId = isSet ? platform::GuidFromText(text({fxId, 2}).value_or("")) : GUID{};
    chunks.reset();
    if (isSet && !isZero(engineId) && hasStore()) {
        const auto layout = layouts.find(platform::guidText(engineId));
        chunks = layout == layouts.end() ? ModelChunks() : layout->second;
        for (std::size_t index = 0; index < chunks->size(); ++index) {
            readChunk(index);
        }
    }
    buildIfSelected();
}

// Presets -----------------------------------------------------------------------------------------------

void WalkModel::readChunk(std::size_t index) {
    if (!chunks || index >= chunks->size()) {
        return;
    }
    const RegistryValue* const blob = value({fxId, static_cast<DWORD>(3000 + index)});
    if (blob != nullptr && blob->type == type::binary && blob->data.size() >= 4) {
        applyBlob((*chunks)[index], blob->data);
    }
}

void WalkModel::applyBlob(std::vector<ModelParameter>& chunk, const Bytes& blob) {
    std::vector<std::uint32_t> sizes;
    for (const ModelParameter& parameter : chunk) {
        sizes.push_back(parameter.size);
    }
    std::size_t at = 4;
    for (std::uint32_t entry = word(blob, 2); entry > 0 && blob.size() - at >= 4; --entry, at += 4) {
        if (const std::uint32_t position = word(blob, at); position < sizes.size()) {
            sizes[position] = word(blob, at + 2);
        }
    }
    for (std::size_t i = 0; i < chunk.size() && blob.size() - at >= sizes[i]; at += sizes[i++]) {
        const Bytes before = chunk[i].effective();
        const auto slice = blob.begin() + static_cast<std::ptrdiff_t>(at);
        chunk[i].preset.assign(slice, slice + sizes[i]);
        if (isActive() && chunk[i].effective() != before) {
            send(chunk[i]);
        }
    }
}

// Notifications -----------------------------------------------------------------------------------------

void WalkModel::tellVolume(const std::string& endpointId, float scalar) {
    if (platform::equalIgnoringCase(platform::toWide(endpointId), platform::toWide(endpoint))) {
        volumeDb = decibels(scalar);
        if (isActive() && deviceHasVolume) {
            sendVolume();
        }
    }
}

void WalkModel::tellDisabled(const std::string& endpointId, bool disabled) {
    if (platform::equalIgnoringCase(platform::toWide(endpointId), platform::toWide(endpoint)) &&
        disabled != isDisabled) {
        isDisabled = disabled;
        if (isActive()) {
            tellInstance(effectsDisabled, bytesOf(isDisabled));
        }
    }
}

void WalkModel::tellProperty(const std::string& endpointId, REFPROPERTYKEY key) {
    if (platform::equalIgnoringCase(platform::toWide(endpointId), platform::toWide(endpoint))) {
        onProperty(key);
    }
}

void WalkModel::reportSet() {
    const PropertyValues* const values = readable();
    if (values == nullptr) {
        return;
    }
    for (const auto& [name, stored] : *values) {
        onProperty(platform::TextToKey(name));
    }
}

void WalkModel::onProperty(REFPROPERTYKEY key) {
    if (!hasStore()) {
        return;
    }
    followEffect();
    if (key.fmtid == fxId) {
        readChunk(key.pid - 3000);
    } else if (key == params::hardwarePulseKey) {
        pulseIsCertain = true;
    } else if (key == params::clientListKey) {
        setClients(readClients());
    }
}

void WalkModel::followEffect() {
    const std::optional<std::string> told = text(selection);
    if (!told) {
        return;
    }
    const GUID incoming = platform::GuidFromText(*told);
    if (!(incoming == fxId)) {
        takeEffect(incoming);
    }
}

void WalkModel::setClients(bool are) {
    hasClients = are;
    if (are && isBuilt) {
        engine->mustBeAwake = true;
        engine->mayBeAwake = true;
    }
}

// The engine --------------------------------------------------------------------------------------------

void WalkModel::setAllowed(bool allowed) {
    if (allowed != isAllowed) {
        isAllowed = allowed;
        teardown();
        buildIfSelected();
    }
}

void WalkModel::buildIfSelected() {
    if (presetVersion == 0 || !chunks || !isAllowed) {
        return;
    }
    isHardware = false;
    if ((modeFlags & 1) != 0) {
        const ModelDocument wanted{true, engineId, presetVersion, endpoint};
        ModelEngine candidate = engine && engine->document == wanted ? *engine : made(wanted);
        if (candidate.hasInstance && answers.hardware) {
            isHardware = true;
            engine = candidate;
        }
    }
    if (!isHardware) {
        const ModelDocument wanted{false, engineId, presetVersion, endpoint};
        if (!engine || !(engine->document == wanted)) {
            engine = made(wanted);
        }
    }
    isBuilt = true;
    engine->mustBeAwake = engine->mustBeAwake || hasClients;
    engine->mayBeAwake = engine->mayBeAwake || hasClients;
    if (in.rate != 0) {
        start();
    }
}

ModelEngine WalkModel::made(const ModelDocument& document) {
    ModelEngine result;
    result.document = document;
    const std::string name = moduleOf(document);
    const ModuleFile file = name.empty() ? ModuleFile::missing : files[name];
    if (file == ModuleFile::module || file == ModuleFile::withoutCreate) {
        result.module = name;
    }
    if (file == ModuleFile::module) {
        ++createsAtMost;
        result.hasInstance = !answers.createsNull;
    }
    return result;
}

void WalkModel::start() {
    ++startsAtLeast;
    askVersion();
    for (const std::vector<ModelParameter>& chunk : *chunks) {
        for (const ModelParameter& parameter : chunk) {
            send(parameter);
        }
    }
    tellInstance(effectsDisabled, bytesOf(isDisabled));
    if (deviceHasVolume) {
        readVolume();
        sendVolume();
    }
}

void WalkModel::send(const ModelParameter& parameter) {
    const Bytes& bytes = parameter.effective();
    if (bytes.empty()) {
        return;
    }
    if (parameter.name == ParameterName{-1, -27}) {
        controls.parameter27 = fourBytes<float>(bytes);
    } else if (parameter.name == ParameterName{-1, -28}) {
        controls.parameter28 = fourBytes<float>(bytes);
    } else if (parameter.name == ParameterName{-1, -31}) {
        controls.parameter31 = fourBytes<float>(bytes);
    } else if (parameter.name == ParameterName{-1, -32}) {
        controls.parameter32 = fourBytes<std::uint32_t>(bytes);
    }
    tellInstance(parameter.name, bytes);
}

void WalkModel::tellInstance(const ParameterName& name, const Bytes& bytes) {
    if (engine->hasInstance) {
        engine->parameters[name] = bytes;
    }
}

void WalkModel::readVolume() {
    const ModelDevice& device = devices.at(endpoint);
    volumeDb = device.scalarFails ? 0.0f : decibels(device.scalar);
}

void WalkModel::sendVolume() {
    tellInstance(volumeName, bytesOf(volumeDb));
}

void WalkModel::askVersion() {
    if (engine->hasInstance && !answers.countsAreWrong) {
        moduleVersion = answers.version;
    }
}

// The stream --------------------------------------------------------------------------------------------

void WalkModel::lock(const StreamFormat& input, const StreamFormat& output) {
    if (isLocked) {
        return;
    }
    isLocked = true;
    const bool isOtherRate = input.rate != in.rate;
    in = input;
    out = output;
    if (isOtherRate && isActive()) {
        start();
    }
    if (engine) {
        askVersion();
        clears += engine->hasInstance ? 1 : 0;
    }
}

}  // namespace korva::test
