#include "bench/engine/core_rig.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <random>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "engine/audio_media_type.h"
#include "engine/engine_table.h"
#include "params/catalogue.h"
#include "params/chunk_plan.h"
#include "params/effect_keys.h"
#include "params/preset_blob.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "services/instance_key.h"

namespace korva::bench {

using framework::Held;
using framework::Ref;
using platform::RegistryKey;
namespace registry_type = platform::registry_type;

namespace {

constexpr std::uint32_t presetVersion = 1;
constexpr auto effectKind = params::EffectKind::mode;

void require(bool holds, const char* otherwise) {
    if (!holds) {
        throw std::runtime_error(otherwise);
    }
}

RegistryKey newKey(const std::string& path) {
    RegistryKey key;
    require(RegistryKey::root(platform::RegistryRoot::localMachine)
                    .create(path, platform::RegistryAccess::readWrite, key) == 0,
            "no key in the registry");
    return key;
}

void setProperty(const RegistryKey& set, REFPROPERTYKEY property, std::uint32_t type,
                 std::span<const std::byte> data) {
    require(set.setValue(platform::KeyToText(property), type, data) == 0, "a property can't be set");
}

void setText(const RegistryKey& set, REFPROPERTYKEY property, std::string_view text) {
    platform::WideString wide = platform::toWide(text);
    wide.push_back(0);
    setProperty(set, property, registry_type::string, std::as_bytes(std::span(wide)));
}

void setNumber(const RegistryKey& set, REFPROPERTYKEY property, std::uint32_t number) {
    setProperty(set, property, registry_type::dword, std::as_bytes(std::span(&number, 1)));
}

/// The blob that gives all parameters of a chunk their default bytes.
std::vector<std::byte> defaultBlob(const params::ChunkPlan& plan, std::uint32_t chunk) {
    std::vector<std::vector<std::byte>> slices;
    std::vector<std::uint32_t> sizes;
    for (const params::PlannedParameter& planned : plan.parameters) {
        if (planned.chunk == chunk) {
            slices.push_back(params::defaultPayload(*planned.descriptor));
            sizes.push_back(planned.size);
        }
    }
    return params::makePresetBlob(slices, sizes).value();
}

void setPreset(const RegistryKey& set, const params::ChunkPlan& plan) {
    for (std::uint32_t chunk = 0; chunk < plan.chunkCount; ++chunk) {
        setProperty(set, {benchEffect, params::effect_property::firstChunk + chunk}, registry_type::binary,
                    defaultBlob(plan, chunk));
    }
}

published::APO_CONNECTION_PROPERTY connectionTo(const float* samples) {
    return {reinterpret_cast<UINT_PTR>(samples), StereoBuffer::frames, published::BUFFER_VALID,
            published::connectionPropertySignature};
}

}  // namespace

CoreGround::CoreGround(const GUID& engineId, const std::string& moduleFile, bool hasTelemetry)
    : devices(framework::create<test::FakeDevices>()),
      userPath(params::propertySetPath(endpoint, params::property_set::user)),
      user(newKey(userPath)) {
    static_cast<void>(newKey(params::propertySetPath(endpoint, params::property_set::standard)));
    static_cast<void>(newKey(params::propertySetPath(endpoint, params::property_set::temporary)));
    devices->put(endpoint, framework::create<test::FakeDevice>(endpoint));
    if (hasTelemetry) {
        static_cast<void>(newKey(std::string(services::instance_place::base)));
    }
    std::filesystem::copy_file(moduleFile, moduleOf(engineId));
    install(engineId);
}

engine::Surroundings CoreGround::surroundings() const {
    return {.moduleFolder = modules.file(""), .systemSuppliesStores = false, .newDeviceEnumerator = [this] {
                return Ref<IMMDeviceEnumerator>(devices);
            }};
}

std::string CoreGround::moduleOf(const GUID& engineId) const {
    const std::string_view name = engine::moduleName(engineId, engine::EnginePlatform::floatingPoint);
    return platform::libraryPath(modules.file(""), name).string();
}

void CoreGround::install(const GUID& engineId) {
    const params::ParamLayout* const layout = params::FindLayout(engineId);
    require(layout != nullptr, "no such engine");
    setPreset(user, params::planChunks(*layout).value());
    setNumber(user, {benchEffect, params::effect_property::presetVersion}, presetVersion);
    setNumber(user, {benchEffect, params::effect_property::modeFlags}, 0);
    setText(user, {benchEffect, params::effect_property::engineId}, platform::guidText(engineId));
    setText(user, params::selectionKey(effectKind), platform::guidText(benchEffect));
}

StereoConnection::StereoConnection() {
    constexpr published::UNCOMPRESSEDAUDIOFORMAT stereo = {published::ieeeFloatFormat, 2, 4, 32, 48000.0f, 3};
    published::IAudioMediaType* created = nullptr;
    require(published::succeeded(engine::AudioMediaType::Create(stereo, &created)), "no media type");
    type = Ref<published::IAudioMediaType>::adopt(created);
    descriptor.pFormat = created;
    descriptor.u32MaxFrameCount = StereoBuffer::frames;
    descriptor.u32Signature = published::connectionDescriptorSignature;
}

StereoBuffer::StereoBuffer() : in(connectionTo(input.data())), out(connectionTo(output.data())) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-0.1f, 0.1f);
    std::generate(input.begin(), input.end(), [&] { return level(random); });
}

void StereoBuffer::play(rt::RtProcessor& processor) noexcept {
    published::APO_CONNECTION_PROPERTY* const inputs[] = {&in};
    published::APO_CONNECTION_PROPERTY* const outputs[] = {&out};
    processor.Process(1, inputs, 1, outputs, 2);
}

CoreRig::CoreRig(const CoreGround& ground)
    : identifier(platform::toWide(ground.endpointId())), worker(framework::Dispatcher::start()) {
    on([&] {
        held = Held<engine::EffectCore>::first(framework::create<engine::EffectCore>(
            static_cast<std::uint32_t>(effectKind), ground.surroundings()));
    });
}

CoreRig::~CoreRig() {
    on([this] { held = nullptr; });
}

void CoreRig::begin() {
    core().endpointIdStrW.set(identifier);
    const Held<engine::DspEngine>& engine = core().dspEngine.value();
    require(engine && engine->hasInstance(), "the identifier has led to no module");
}

void CoreRig::lock() {
    core().lockForProcess(connection.get(), connection.get());
    require(core().presetLoadCount.value() != 0, "the engine has not been started");
}

}  // namespace korva::bench
