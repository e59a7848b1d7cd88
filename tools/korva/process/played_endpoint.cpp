#include "korva/process/played_endpoint.h"

#include <chrono>
#include <thread>
#include <vector>

#include "engine/endpoint_steps.h"
#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/preset/effect_class.h"
#include "korva/preset/preset_file.h"
#include "params/fx_property_store.h"
#include "params/property_set_path.h"

namespace korva::tool {

using engine::ChunkReaders;
using engine::EffectCore;
using framework::Held;
using params::ChunkReader;
using params::FxPropertyStore;
using std::chrono::steady_clock;

namespace {

constexpr std::chrono::seconds limit{10};
constexpr std::chrono::microseconds pause{50};

/// The bytes that parameters have of a preset, in their order.
using Slices = std::vector<framework::SharedBytes>;

Slices slicesOf(const ChunkReaders& readers) {
    Slices slices;
    for (const Held<ChunkReader>& reader : readers) {
        for (const params::Parameter* const parameter : reader->parameters()) {
            slices.push_back(parameter->PresetValue.value());
        }
    }
    return slices;
}

/// What the object will have: read as it does, into parameters of our own.
Slices storedSlices(const std::string& endpoint, params::EffectKind kind, const Preset& preset) {
    const auto store =
        Held<FxPropertyStore>::first(FxPropertyStore::Open(endpoint, params::property_set::user));
    const std::shared_ptr<const ChunkReaders> readers =
        engine::readersOf(store.ref(), effectClass(kind), engine::parametersOf(preset.engineId));
    return readers ? slicesOf(*readers) : Slices();
}

/// A parameter is sent as it changes, so the module has what the object has.
bool hasTakenOver(HostedObject& object, const Slices& expected) {
    bool isEqual = false;
    object.inspect([&](EffectCore& core) {
        const std::shared_ptr<const ChunkReaders>& readers = core.chunkReaders.value();
        isEqual = readers != nullptr && slicesOf(*readers) == expected;
    });
    return isEqual;
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
    } else if (!endpoint.empty() && !engine::deviceOf(engine::systemDeviceEnumerator(), endpoint)) {
        fail("there is no endpoint '{}'; 'korva endpoint list' shows those there are", endpoint);
    }
}

double PlayedEndpoint::changePreset(HostedObject& object, const Preset& preset) const {
    const auto begin = steady_clock::now();
    installPreset(preset, identifier, effect);
    const Slices expected = storedSlices(identifier, effect, preset);
    while (!hasTakenOver(object, expected)) {
        throwIfInterrupted();
        if (steady_clock::now() - begin > limit) {
            fail("a change of {} hasn't come to the object within {} s", presetWords(identifier, effect),
                 limit.count());
        }
        std::this_thread::sleep_for(pause);
    }
    return std::chrono::duration<double, std::milli>(steady_clock::now() - begin).count();
}

}  // namespace korva::tool
