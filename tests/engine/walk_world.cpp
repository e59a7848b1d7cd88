#include "tests/engine/walk_world.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <array>
#include <bit>
#include <fstream>
#include <random>
#include <sstream>
#include <string_view>
#include <utility>

#include "engine/engine_config_document.h"
#include "params/property_set_path.h"
#include "platform/property_key.h"
#include "platform/unicode.h"

namespace korva::test {

namespace {

constexpr const char* moduleNames[] = {"TANMER64", "DRIVOL64", "PELLUX64"};
constexpr std::string_view endpointsPath = "Software\\Veltrane\\APO\\";

/// The system's registry is for all tests that run, so they share no identifier.
std::string newIdentifier() {
    std::random_device random;
    GUID guid{random(), 0xFFFF, 0, {}};
    for (unsigned char& byte : guid.Data4) {
        byte = static_cast<unsigned char>(random());
    }
    return "{0.0.0.00000000}." + platform::guidText(guid);
}

std::string digitsOf(const Bytes& bytes) {
    std::string digits;
    for (const std::byte byte : bytes) {
        digits += "0123456789abcdef"[std::to_integer<unsigned>(byte) / 16];
        digits += "0123456789abcdef"[std::to_integer<unsigned>(byte) % 16];
    }
    return digits;
}

std::string textOf(const Bytes& bytes) {
    return std::to_string(bytes.size()) + ":" + digitsOf(bytes);
}

std::filesystem::path libraryOf(ModuleFile file) {
    return file == ModuleFile::module ? KORVA_REPORTING_MODULE : KORVA_MODULE_WITHOUT_CREATE;
}

}  // namespace

/// Collects what differs.
class WalkWorld::Comparison {
public:
    template <class T>
    void same(const char* what, const T& is, const T& expected) {
        if (!(is == expected)) {
            differences << what << ": " << is << ", expected " << expected << '\n';
        }
    }
    [[nodiscard]] std::string text() const { return differences.str(); }

private:
    std::ostringstream differences;
};

WalkWorld::WalkWorld()
    : replacement(framework::create<WalkStore>()),
      replacements(framework::create<UserSetAlone>(replacement)),
      scribe(KORVA_REGISTRY_SCRIBE) {
    for (int count = 0; count < 3; ++count) {
        const std::string id = newIdentifier();
        ids.push_back(id);
        devicesById[id] = framework::create<FakeDevice>(id);
        volumesById[id] = framework::create<FakeVolume>();
        devicesById[id]->volume = volumesById[id];
        rig.devices->put(id, devicesById[id]);
        EXPECT_EQ(makeSet(id, params::property_set::user), 0);
    }
    for (const char* const name : moduleNames) {
        putModule(name, ModuleFile::module);
    }
    audio = std::make_unique<WalkAudio>(rig.core().realtime());
}

WalkWorld::~WalkWorld() {
    EXPECT_EQ(audio->complaint(), "");
    audio = nullptr;
    rig.close();
    rig.on([&] {
        EXPECT_TRUE(witness.live().empty());
        for (const auto& [name, count] : witness.loadedNow) {
            EXPECT_EQ(count, 0) << name << " is still loaded";
        }
    });
    EXPECT_EQ(witness.complaints(), "");
    for (const std::string& id : ids) {
        EXPECT_EQ(ask({"remove", std::string(endpointsPath) + id}), 0);
    }
}

framework::Ref<FakeDevice> WalkWorld::device(const std::string& id) {
    const auto known = devicesById.find(id);
    if (known != devicesById.end()) {
        return known->second;
    }
    return framework::create<FakeDevice>(id.empty() ? std::nullopt : std::optional(id));
}

void WalkWorld::setDevice(const std::string& id, const ModelDevice& state) {
    rig.on([&] {
        FakeDevice& known = *devicesById.at(id);
        FakeVolume& volume = *volumesById.at(id);
        known.state = state.isActive ? published::deviceStateActive : 8;
        known.volume = state.hasVolume ? framework::Ref<IAudioEndpointVolume>(volumesById.at(id)) : nullptr;
        volume.scalar = state.scalar;
        volume.scalarResult = state.scalarFails ? published::unspecifiedFailure : published::ok;
    });
}

int WalkWorld::ask(const std::vector<std::string>& parts) {
    std::string line;
    for (const std::string& part : parts) {
        line += (line.empty() ? "" : "\t") + part;
    }
    const std::string answer = scribe.ask(line);
    return answer.empty() ? -1 : std::stoi(answer);
}

int WalkWorld::makeSet(const std::string& id, std::string_view set) {
    return ask({"make", params::propertySetPath(id, set)});
}

int WalkWorld::removeSet(const std::string& id, std::string_view set) {
    return ask({"remove", params::propertySetPath(id, set)});
}

int WalkWorld::write(const std::string& id, std::string_view set, const std::string& name,
                     const platform::RegistryValue& value) {
    return ask(
        {"set", params::propertySetPath(id, set), name, std::to_string(value.type), digitsOf(value.data)});
}

int WalkWorld::remove(const std::string& id, std::string_view set, const std::string& name) {
    return ask({"delete", params::propertySetPath(id, set), name});
}

// A new file each time: one that was loaded may be remembered by the system for what it is.
void WalkWorld::putModule(const std::string& name, ModuleFile file) {
    const std::filesystem::path path =
        rig.modules.path() / (name + std::filesystem::path(KORVA_REPORTING_MODULE).extension().string());
    std::filesystem::remove(path);
    if (file == ModuleFile::text) {
        std::ofstream(path) << "no library\n";
    } else if (file != ModuleFile::missing) {
        rig.modules.putLibrary(libraryOf(file), name);
    }
}

void WalkWorld::setAnswers(const ModuleAnswers& answers) {
    rig.on([&] { witness.answers = answers; });
}

std::string WalkWorld::differences(const WalkModel& model) {
    Comparison found;
    rig.on([&] {
        compareValues(found, model);
        compareEngine(found, model);
        compareStream(found, model);
        compareModules(found, model);
    });
    return found.text();
}

void WalkWorld::compareValues(Comparison& found, const WalkModel& model) {
    engine::EffectCore& core = rig.core();
    const auto device = model.devices.find(model.endpoint);
    const bool hasDevice = device != model.devices.end();
    found.same("outEndpointId", core.outEndpointId.value(), model.endpoint);
    found.same("endpointGuidText", core.endpointGuidText.value(),
               model.endpoint.empty() ? "" : model.endpoint.substr(model.endpoint.rfind('{')));
    found.same("device", static_cast<bool>(core.device.value()), hasDevice);
    found.same("endpointVolume", static_cast<bool>(core.endpointVolume.value()), model.hasVolume());
    found.same("userStore", static_cast<bool>(core.userStore.value()), model.hasStore());
    found.same("fxId", platform::guidText(core.fxId.value()), platform::guidText(model.fxId));
    found.same("fxIdText", core.fxIdText.value(),
               model.fxId == GUID{} ? std::string() : platform::guidText(model.fxId));
    found.same("presetVersion", core.presetVersion.value(), model.presetVersion);
    found.same("modeFlags", core.modeFlags.value(), model.modeFlags);
    found.same("engineId", platform::guidText(core.engineId.value()), platform::guidText(model.engineId));
    found.same("chunkReaders", core.chunkReaders.value() != nullptr, model.chunks.has_value());
    found.same("count of chunkReaders", core.chunkReaders.value() ? core.chunkReaders.value()->size() : 0,
               model.chunks ? model.chunks->size() : 0);
    found.same("hasClientList", core.hasClientList.value(), model.hasClients);
    found.same("engineAllowed", core.engineAllowed.value(), model.isAllowed);
    if (model.pulseIsCertain) {
        found.same("hardwarePulse", core.hardwarePulse.value(), true);
    }
}

void WalkWorld::compareEngine(Comparison& found, const WalkModel& model) {
    const framework::Held<engine::DspEngine> engine = rig.core().dspEngine.value();
    found.same("dspEngine", static_cast<bool>(engine), model.engine.has_value());
    found.same("hardwareMode", rig.core().realtime().hardwareMode.get(), model.isHardware);
    if (!engine || !model.engine) {
        return;
    }
    const ModelDocument& document = model.engine->document;
    found.same("EngineId", platform::guidText(engine->engineId()), platform::guidText(document.engineId));
    found.same("PresetVersion", engine->presetVersion(), document.presetVersion);
    found.same("OutEndpointId", engine->document().json().at("OutEndpointId").get<std::string>(),
               document.outEndpointId);
    found.same("PlatformName", engine->platformName(), std::string(document.isHardware ? "iSST" : "Float"));
    found.same("Hardware", engine->document().json().contains("Hardware"), document.isHardware);
    found.same("instance", engine->hasInstance(), model.engine->hasInstance);
}

void WalkWorld::compareStream(Comparison& found, const WalkModel& model) {
    engine::EffectCore& core = rig.core();
    found.same("locked", core.locked.value(), model.isLocked);
    found.same("SampleRate", core.sampleRate.value(), model.in.rate);
    found.same("InputChannelCount", core.inputChannelCount.value(), model.in.channels);
    found.same("OutputChannelCount", core.outputChannelCount.value(), model.out.channels);
    found.same("sysFxDisabled", core.sysFxDisabled.value(), model.isDisabled);
    found.same("masterVolumeDb", core.masterVolumeDb.value(), model.volumeDb);
    found.same("DSPModuleVersion", core.dspModuleVersion.value(), model.moduleVersion);
    // Any bytes may have come, those of what is no number among them.
    using Words = std::array<std::uint32_t, 4>;
    found.same("the copies of parameters",
               std::bit_cast<Words>(core.engineControls()) == std::bit_cast<Words>(model.controls), true);
}

void WalkWorld::compareModules(Comparison& found, const WalkModel& model) {
    const std::vector<WitnessedInstance*> live = witness.live();
    const bool hasInstance = model.engine && model.engine->hasInstance;
    found.same("count of instances", live.size(), std::size_t{hasInstance ? 1U : 0U});
    for (const char* const name : moduleNames) {
        const bool isOurs = model.files.at(name) == ModuleFile::module;
        found.same(name, witness.loadedNow[name], model.isLoaded(name) && isOurs ? 1 : 0);
    }
    if (hasInstance && live.size() == 1) {
        compareInstance(found, model);
    }
    found.same("complaints", witness.complaints(), std::string());
}

void WalkWorld::compareInstance(Comparison& found, const WalkModel& model) {
    const WitnessedInstance& instance = *witness.live().front();
    const ModelEngine& expected = *model.engine;
    found.same("module", instance.module, expected.module);
    found.same("active", instance.phase.load() == WitnessedInstance::Phase::active, model.isActive());
    found.same("woken", instance.wakes > 0 || !expected.mustBeAwake, true);
    found.same("not woken", instance.wakes == 0 || expected.mayBeAwake, true);
    found.same("count of parameters", instance.parameters.size(), expected.parameters.size());
    for (const auto& [name, bytes] : expected.parameters) {
        const auto known = instance.parameters.find(name);
        if (known == instance.parameters.end() || known->second != bytes) {
            const std::string title =
                "parameter " + std::to_string(name.first) + "/" + std::to_string(name.second);
            found.same(title.c_str(),
                       known == instance.parameters.end() ? std::string("none") : textOf(known->second),
                       textOf(bytes));
        }
    }
}

// Two sides of one format differ by the module alone: without it each plane comes back as it went in.
std::string WalkWorld::soundDifferences(const WalkModel& model) {
    const WalkAudio::Heard heard = audio->next();
    Comparison found;
    found.same("sound", audio->complaint(), std::string());
    if (model.in.channels != 0 && model.in.channels == model.out.channels) {
        const float expected = model.isProcessing() ? WalkAudio::level / 2 : WalkAudio::level;
        found.same("lowest sample", heard.lowest, expected);
        found.same("highest sample", heard.highest, expected);
    }
    return found.text();
}

}  // namespace korva::test
