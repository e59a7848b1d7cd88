#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <random>
#include <string>

#include "korva/preset/preset_properties.h"
#include "korva/preset/preset_text.h"
#include "korva/preset/stored_preset.h"
#include "platform/property_key.h"
#include "platform/registry.h"
#include "tests/support/own_registry.h"

namespace korva::tool {
namespace {

using platform::RegistryKey;
using Bytes = std::vector<std::byte>;

constexpr int presetsOfAnEngine = 1000;
constexpr auto kind = params::EffectKind::stream;

std::uint32_t seedOfRun() {
    const char* const given = std::getenv("KORVA_PRESET_SEED");
    const auto seed =
        given != nullptr ? static_cast<std::uint32_t>(std::stoul(given)) : std::random_device()();
    std::cout << "KORVA_PRESET_SEED=" << seed << '\n';
    return seed;
}

class RandomPresets {
public:
    explicit RandomPresets(std::uint32_t seed) : generator(seed) {}

    Preset next(const params::ParamLayout& layout) {
        Preset preset{.engineId = layout.engineId};
        preset.presetVersion = 1 + below(0xFFFFFFFF);
        preset.hardware = below(2) == 1;
        for (std::uint32_t left = below(40); left > 0; --left) {
            const std::int32_t module = static_cast<std::int32_t>(below(layout.ModuleCount() + 1)) - 1;
            const params::ParamDescriptorList& list = *findModule(layout, module);
            const params::ParamDescriptor& descriptor = list.At(below(list.Count()));
            preset.parameters[{module, descriptor.paramId}] = payload(descriptor);
        }
        return preset;
    }

private:
    std::uint32_t below(std::uint32_t count) {
        return std::uniform_int_distribution<std::uint32_t>(0, count - 1)(generator);
    }

    /// Often of the right size and with bytes that are values, now and then neither.
    Bytes payload(const params::ParamDescriptor& descriptor) {
        Bytes bytes(below(4) == 0 ? below(below(20) == 0 ? 5000 : 20) : params::payloadSize(descriptor));
        const std::uint32_t highest = below(3) == 0 ? 256 : 2;
        for (std::byte& byte : bytes) {
            byte = static_cast<std::byte>(below(highest));
        }
        return bytes;
    }

    std::mt19937 generator;
};

using Values = std::map<std::string, std::pair<std::uint32_t, Bytes>>;

/// All that is in a key.
Values valuesIn(const RegistryKey& key) {
    Values values;
    std::string name;
    for (std::uint32_t i = 0; key.valueName(i, 512, name) == platform::registry_result::success; ++i) {
        platform::RegistryValue value;
        EXPECT_EQ(key.readValue(name, value), platform::registry_result::success);
        values[name] = {value.type, value.data};
    }
    return values;
}

void install(const Preset& preset, const std::string& path) {
    ASSERT_EQ(platform::applyRegistryChanges(presetChanges(preset, path, kind)),
              platform::registry_result::success);
}

/// Installs, dumps, and installs what was dumped.
void expectIdentity(const Preset& preset, const std::string& path, const RegistryKey& key) {
    install(preset, path);
    const Values before = valuesIn(key);
    const std::string text = presetText(readStoredPreset(key, kind));
    const ReadPreset read = readPresetText(text);
    ASSERT_TRUE(read.preset) << faultText("dump", read.faults.front()) << "\n" << text;
    install(*read.preset, path);
    ASSERT_EQ(valuesIn(key), before) << text;
    ASSERT_EQ(presetText(readStoredPreset(key, kind)), text);
}

TEST(PresetIdentity, InstallingWhatWasDumpedChangesNothing) {
    const test::OwnRegistry registry;
    const std::string path = registry.key() + "\\Set";
    RegistryKey key;
    ASSERT_EQ(RegistryKey::root(platform::RegistryRoot::localMachine)
                  .create(path, platform::RegistryAccess::read, key),
              platform::registry_result::success);
    RandomPresets random(seedOfRun());
    for (const params::ParamLayout& layout : params::allLayouts()) {
        for (int i = 0; i < presetsOfAnEngine && !testing::Test::HasFatalFailure(); ++i) {
            SCOPED_TRACE(platform::guidText(layout.engineId) + " " + std::to_string(i));
            expectIdentity(random.next(layout), path, key);
        }
    }
}

}  // namespace
}  // namespace korva::tool
