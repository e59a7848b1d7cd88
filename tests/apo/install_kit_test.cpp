// The INF files of packaging/windows, against what the library is and registers by itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "apo/effect_class.h"
#include "engine/endpoint_steps.h"
#include "engine/engine_table.h"
#include "params/effects_store_provider.h"
#include "params/fx_property_store.h"
#include "platform/module_library.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "tests/apo/inf_faults.h"
#include "tests/apo/inf_file.h"
#include "tests/apo/server_registration_test.h"
#include "tests/support/own_endpoint.h"

namespace korva::apo {
namespace {

using params::EffectKind;
using platform::RegistryAccess;
using platform::RegistryKey;
using test::InfFile;
using test::InfRegistryValue;
namespace processing_mode = published::processing_mode;

const std::string kit = KORVA_INSTALL_KIT;
const std::string windows10 = "NTamd64.10.0...17763";
const std::string windows11 = "NTamd64.10.0...22000";
const std::string fx = "{D04E05A6-594B-4FB6-A80D-01AF5EED7D1D},";
const std::string fxModes = "{D3993A3F-99C2-4402-B5EC-A92A0367664B},";

InfFile component(const std::string& system) {
    return InfFile::at(kit + "/inf/korva_component_" + system + ".inf");
}

const InfFile& extension() {
    static const InfFile file = InfFile::at(kit + "/inf/korva_extension.inf");
    return file;
}

std::string contextKey() {
    return "FX\\0\\" + platform::upperGuidText(params::storeContext);
}

std::string classId(const EffectClass& effect) {
    return platform::upperGuidText(effect.record.clsid);
}

/// The pid of the first of the engine's keys for a position is the stream effect's; the others follow.
std::string pidOf(const EffectClass& effect, std::uint32_t first) {
    return std::to_string(first + static_cast<std::uint32_t>(effect.kind) -
                          static_cast<std::uint32_t>(EffectKind::stream));
}

/// The values of one key.
std::vector<InfRegistryValue> below(const std::vector<InfRegistryValue>& values, const std::string& key) {
    std::vector<InfRegistryValue> chosen;
    std::ranges::copy_if(values, std::back_inserter(chosen),
                         [&](const InfRegistryValue& value) { return value.key == key; });
    return chosen;
}

/// A value; an empty one if it isn't there.
InfRegistryValue valueAt(const std::vector<InfRegistryValue>& values, const std::string& key,
                         const std::string& name) {
    const auto found = std::ranges::find_if(
        values, [&](const InfRegistryValue& value) { return value.key == key && value.name == name; });
    return found == values.end() ? InfRegistryValue() : *found;
}

Lines textsAt(const std::vector<InfRegistryValue>& values, const std::string& key, const std::string& name) {
    return valueAt(values, key, name).values;
}

/// The lines below a key but for the library's path, which is another one in each place.
Lines linesWithoutPath(const RegistryKey& root, const std::string& path) {
    Lines lines = test::treeLines(root, path);
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("InprocServer32 @ = "); });
    return lines;
}

TEST(InstallKit, HasNoFaults) {
    EXPECT_EQ(test::faultsOf(component("10")), Lines{});
    EXPECT_EQ(test::faultsOf(component("11")), Lines{});
    EXPECT_EQ(test::faultsOf(extension()), Lines{});
}

TEST_F(ServerRegistration, IsWhatTheInstallKitRegisters) {
    ASSERT_EQ(registerServer(), published::ok);
    RegistryKey place;
    ASSERT_EQ(RegistryKey::root(platform::RegistryRoot::localMachine)
                  .create(own.key() + "\\Driver", RegistryAccess::readWrite, place),
              0);
    std::vector<InfRegistryValue> values = component("11").addedValues("Korva.Install");
    std::erase_if(values, [](const InfRegistryValue& value) { return value.root != "HKR"; });

    ASSERT_EQ(test::writeValues(place, values), 0);

    for (const EffectClass* const effect : effectClasses) {
        const std::string com = "CLSID\\" + classId(*effect);
        const std::string object = "AudioEngine\\AudioProcessingObjects\\" + classId(*effect);
        EXPECT_EQ(linesWithoutPath(place, "Classes\\" + com),
                  linesWithoutPath(RegistryKey::root(classesRoot), com));
        EXPECT_EQ(test::treeLines(place, object), test::treeLines(classesRoot, object));
        EXPECT_EQ(test::treeLines(place, object).size(), 12u);
        const InfRegistryValue library = valueAt(values, "Classes\\" + com + "\\InprocServer32", "");
        EXPECT_EQ(library.values, Lines{"%13%\\KORVA.dll"});
        EXPECT_EQ(library.flags, test::inf_flag::path);
    }
    EXPECT_EQ(test::keyNamesOf(place).size(), 2u);
}

TEST(InstallKit, RegistersTheSameOnBothSystems) {
    for (const char* const name : {"Korva.Com", "Korva.Objects", "Korva.Telemetry"}) {
        const auto old = component("10").registryValues(name);
        const auto now = component("11").registryValues(name);
        EXPECT_TRUE(std::ranges::equal(old, now, [](const auto& a, const auto& b) {
            return a.root == b.root && a.key == b.key && a.name == b.name && a.flags == b.flags &&
                   a.values == b.values;
        })) << name;
    }
}

TEST(InstallKit, HasTheClassOfEachSystem) {
    const InfFile old = component("10");
    const InfFile now = component("11");
    EXPECT_EQ(old.field("Version", "Class"), "SoftwareComponent");
    EXPECT_EQ(old.field("Version", "ClassGuid"), "{5C4C3332-344D-483C-8739-259E934C9CC8}");
    EXPECT_EQ(now.field("Version", "Class"), "AudioProcessingObject");
    EXPECT_EQ(now.field("Version", "ClassGuid"), "{5989FCE8-9CD0-467D-8A6A-5419E31529D4}");
    EXPECT_EQ(extension().field("Version", "Class"), "Extension");
    EXPECT_EQ(extension().field("Version", "ClassGuid"), "{E2F84CE7-8EFA-411C-AA69-97454CA4CB57}");

    // The older file names the newer system and has nothing for it; the newer one is for that alone.
    EXPECT_EQ(old.section("Manufacturer")[0].fields, (Lines{"Korva", windows10, windows11}));
    EXPECT_EQ(old.section("Korva." + windows10).size(), 1u);
    EXPECT_TRUE(old.section("Korva." + windows11).empty());
    EXPECT_EQ(now.section("Manufacturer")[0].fields, (Lines{"Korva", windows11}));
}

TEST(InstallKit, StaysInTheDriverStoreUntouched) {
    for (const char* const system : {"10", "11"}) {
        const InfFile inf = component(system);
        EXPECT_EQ(inf.fields("DestinationDirs", "Korva.Files"), Lines{"13"});
        EXPECT_EQ(inf.fields("Version", "PnpLockdown"), Lines{"1"});
        EXPECT_EQ(inf.fields("Korva.Install.Services", "AddService"), (Lines{"", "0x00000002"}));
        EXPECT_EQ(inf.fields("SignatureAttributes.PETrust", "PETrust"), Lines{"true"});
        for (const test::InfLine& file : inf.section("Korva.Files")) {
            EXPECT_EQ(inf.field("SignatureAttributes", file.field(0)), "SignatureAttributes.PETrust");
        }
        EXPECT_EQ(inf.field("Version", "CatalogFile"), std::string("korva_component_") + system + ".cat");
    }
}

TEST(InstallKit, HasTheVersionOfTheLibrary) {
    std::ifstream file(KORVA_VERSION_RESOURCE);
    const std::string resource((std::istreambuf_iterator<char>(file)), {});
    for (const InfFile& inf : {component("10"), component("11"), extension()}) {
        const Lines driver = inf.fields("Version", "DriverVer");
        ASSERT_EQ(driver.size(), 2u);
        EXPECT_NE(resource.find("VALUE \"FileVersion\", \"" + driver[1] + "\""), resource.npos) << driver[1];
    }
}

TEST(InstallKit, MakesTheTelemetryKeyWithAccessForTheAudioEngine) {
    const InfFile inf = component("11");
    const auto values = inf.registryValues("Korva.Telemetry");
    ASSERT_EQ(values.size(), 1u);
    EXPECT_EQ(values[0].root, "HKLM");
    EXPECT_EQ(values[0].key, "Software\\Kestrelwright");
    EXPECT_EQ(values[0].flags, test::inf_flag::keyOnly);
    const std::string access = inf.section("Korva.Telemetry.security")[0].field(0);
    for (const char* const entry : {"(A;CI;GA;;;SY)", "(A;CI;GA;;;BA)", "(A;CI;0x2001F;;;LS)"}) {
        EXPECT_NE(access.find(entry), access.npos) << entry;
    }
}

TEST(InstallKit, GivesTheDeviceTheComponentThatIsInstalled) {
    const std::string id = extension().field("Korva.Component", "ComponentIDs");
    EXPECT_FALSE(id.empty());
    EXPECT_EQ(component("10").section("Korva." + windows10)[0].field(1), "SWC\\" + id);
    EXPECT_EQ(component("11").section("Korva." + windows11)[0].field(1), "SWC\\" + id);
    EXPECT_EQ(extension().section("Manufacturer")[0].fields, (Lines{"Korva", windows10, windows11}));
}

TEST(InstallKit, PutsEachClassIntoItsPosition) {
    for (const char* const topology : {"Korva.Topology10", "Korva.Topology11"}) {
        const auto values = extension().addedValues(topology);
        for (const EffectClass* const effect : effectClasses) {
            EXPECT_EQ(textsAt(values, "FX\\0", fx + pidOf(*effect, 5)), Lines{classId(*effect)});
        }
    }
}

TEST(InstallKit, NamesModesThatTheObjectKnows) {
    const std::array<GUID, 7> known = {processing_mode::defaultMode,    processing_mode::raw,
                                       processing_mode::communications, processing_mode::speech,
                                       processing_mode::notification,   processing_mode::media,
                                       processing_mode::movie};
    const auto values = extension().addedValues("Korva.Topology11");
    for (const EffectClass* const effect : effectClasses) {
        const Lines modes = textsAt(values, "FX\\0", fxModes + pidOf(*effect, 5));
        EXPECT_FALSE(modes.empty());
        for (const std::string& mode : modes) {
            EXPECT_TRUE(std::ranges::any_of(known, [&](const GUID& guid) {
                return platform::upperGuidText(guid) == mode;
            })) << mode;
        }
    }
}

TEST(InstallKit, HasOneFormOfPropertiesOnEachSystem) {
    const auto old = extension().addedValues("Korva.Topology10");
    const auto now = extension().addedValues("Korva.Topology11");
    const Lines anyNode = {"{00000000-0000-0000-0000-000000000000}"};

    EXPECT_EQ(textsAt(old, "FX\\0", fx + "0"), anyNode);
    EXPECT_EQ(below(old, "FX\\0").size(), old.size());
    EXPECT_EQ(textsAt(now, contextKey(), fx + "0"), anyNode);
    EXPECT_TRUE(textsAt(now, "FX\\0", fx + "0").empty());
    // Besides the association, only what says which class is where: that has one form.
    EXPECT_EQ(below(now, "FX\\0").size(), 2 * effectClasses.size());
}

TEST(InstallKit, HasSettingsThatTheObjectFinds) {
    const test::OwnEndpoint endpoint;
    const RegistryKey set = endpoint.makeSet("User");
    auto values = below(extension().addedValues("Korva.Topology11"), contextKey() + "\\User");
    for (InfRegistryValue& value : values) {
        value.key.clear();
    }
    ASSERT_EQ(test::writeValues(set, values), 0);
    const engine::PropertyStore store = params::FxPropertyStore::Open(endpoint.id(), "User");
    ASSERT_NE(store, nullptr);

    const GUID fxId = engine::guidAt(store, params::selectionKey(EffectKind::mode));
    EXPECT_EQ(fxId, modeEffect.record.clsid);
    EXPECT_EQ(engine::presetVersionIn(store, fxId), 1u);
    EXPECT_EQ(engine::modeFlagsIn(store, fxId), 0u);
    const std::string module(
        engine::moduleName(engine::engineIdIn(store, fxId), engine::EnginePlatform::floatingPoint));
    EXPECT_EQ(component("11").field("SourceDisksFiles", module + ".dll"), "1");
    // What selects the settings is written last.
    EXPECT_EQ(values.back().values, Lines{classId(modeEffect)});
}

TEST(InstallKit, KeepsACopyOfTheSettingsAsTheyWereShipped) {
    const auto values = extension().addedValues("Korva.Topology11");
    const auto user = below(values, contextKey() + "\\User");
    const auto shipped = below(values, contextKey() + "\\Default");
    EXPECT_EQ(user.size(), 4u);
    EXPECT_TRUE(std::ranges::equal(user, shipped, [](const auto& a, const auto& b) {
        return a.name == b.name && a.flags == b.flags && a.values == b.values;
    }));
}

}  // namespace
}  // namespace korva::apo
