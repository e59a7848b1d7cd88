#include "korva/preset/preset_properties.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>

#include "korva/catalogue/engine_parameters.h"
#include "korva/preset/effect_class.h"
#include "params/chunk_plan.h"
#include "platform/property_key.h"
#include "tests/cli/preset_tool_test.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using platform::RegistryValue;
using Bytes = std::vector<std::byte>;
using Values = std::map<std::string, RegistryValue>;
namespace types = platform::registry_type;

constexpr auto kind = params::EffectKind::mode;
const std::string className = "{c26ad82e-b1cb-4bdf-87e9-cacd7fd6c6fd}";

Bytes bytes(std::initializer_list<unsigned> values) {
    Bytes result;
    std::ranges::transform(values, std::back_inserter(result),
                           [](unsigned value) { return static_cast<std::byte>(value); });
    return result;
}

Preset presetOf(const char* engine) {
    return {.engineId = platform::GuidFromText(engine)};
}

/// What is there after a preset was installed where nothing was.
Values valuesOf(const Preset& preset) {
    Values values;
    for (const RegistryChange& change : presetChanges(preset, "Set", kind)) {
        if (change.kind == RegistryChange::Kind::setValue) {
            values[change.name] = change.value;
        }
    }
    return values;
}

Preset read(const Values& values) {
    return readPreset(kind, [&](const PROPERTYKEY& key) {
        const auto found = values.find(platform::KeyToText(key));
        return found == values.end() ? std::nullopt : std::optional(found->second);
    });
}

/// Why values are no preset.
std::string refusalOf(const Values& values) {
    try {
        (void)read(values);
    } catch (const NoPreset& reason) {
        return reason.what();
    }
    return "";
}

RegistryValue text(const std::string& ascii) {
    RegistryValue value{types::string, {}};
    for (const char c : ascii + '\0') {
        value.data.push_back(static_cast<std::byte>(c));
        value.data.push_back(std::byte{0});
    }
    return value;
}

std::string chunkName(int index) {
    return className + "," + std::to_string(3000 + index);
}

TEST(PresetProperties, AreTheSelectionThreeSettingsAndAChunkEach) {
    Preset preset = presetOf(test::thirdEngine);
    preset.presetVersion = 0x01020304;
    preset.hardware = true;
    const Values values = valuesOf(preset);
    EXPECT_EQ(values.size(), 4U + 4);
    const RegistryValue& selection = values.at("{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},4");
    EXPECT_EQ(selection.type, types::string);
    EXPECT_EQ(selection.data, text(className).data);
    EXPECT_EQ(values.at(className + ",0").type, types::dword);
    EXPECT_EQ(values.at(className + ",0").data, bytes({4, 3, 2, 1}));
    EXPECT_EQ(values.at(className + ",1").type, types::dword);
    EXPECT_EQ(values.at(className + ",1").data, bytes({1, 0, 0, 0}));
    EXPECT_EQ(values.at(className + ",2").type, types::string);
    EXPECT_EQ(values.at(className + ",2").data, text(test::thirdEngine).data);
    for (int chunk = 0; chunk < 4; ++chunk) {
        EXPECT_EQ(values.at(chunkName(chunk)).type, types::binary);
        EXPECT_EQ(values.at(chunkName(chunk)).data.at(2), std::byte{0}) << "no override";
    }
}

TEST(PresetProperties, EachEffectHasItsOwnClassAndSelection) {
    using enum params::EffectKind;
    const std::map<params::EffectKind, std::pair<std::string, int>> expected = {
        {stream, {"{f71ca881-a2e0-43d1-9b8d-cef14aa0d58d}", 3}},
        {mode, {className, 4}},
        {endpoint, {"{8f3540df-18b0-4943-b916-d4a79801587d}", 5}}};
    for (const auto& [effect, names] : expected) {
        const auto changes = presetChanges(presetOf(test::thirdEngine), "Set", effect);
        EXPECT_EQ(changes.back().name,
                  "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763}," + std::to_string(names.second));
        EXPECT_EQ(changes.back().value.data, text(names.first).data);
        EXPECT_EQ(changes.front().name, names.first + ",3000");
    }
    EXPECT_EQ(effectOfName("sfx"), stream);
    EXPECT_EQ(effectOfName("mfx"), mode);
    EXPECT_EQ(effectOfName("efx"), endpoint);
    EXPECT_EQ(effectOfName("SFX"), std::nullopt);
}

TEST(PresetProperties, ChunksThatOnlyLargerEnginesHaveAreDeleted) {
    std::vector<std::string> deleted;
    for (const RegistryChange& change : presetChanges(presetOf(test::thirdEngine), "Set", kind)) {
        EXPECT_EQ(change.path, "Set");
        EXPECT_EQ(change.root, platform::RegistryRoot::localMachine);
        if (change.kind == RegistryChange::Kind::deleteValue) {
            deleted.push_back(change.name);
        }
    }
    std::vector<std::string> expected;
    for (int chunk = 4; chunk < 13; ++chunk) {
        expected.push_back(chunkName(chunk));
    }
    EXPECT_EQ(deleted, expected);
}

TEST(PresetProperties, AParameterStandsWhereTheCatalogueListsIt) {
    for (const params::ParamLayout& layout : params::allLayouts()) {
        const Preset plain{.engineId = layout.engineId};
        const Values before = valuesOf(plain);
        for (const ListedParameter& listed : listEngine(layout).parameters) {
            Preset preset = plain;
            Bytes payload = params::defaultPayload(*listed.descriptor);
            std::ranges::transform(payload, payload.begin(), [](std::byte b) { return ~b; });
            preset.parameters[{listed.module, listed.descriptor->paramId}] = payload;
            Values expected = before;
            Bytes& blob = expected.at(chunkName(static_cast<int>(listed.chunk))).data;
            std::ranges::copy(payload, blob.begin() + 4 + listed.offset);
            const Values after = valuesOf(preset);
            ASSERT_TRUE(std::ranges::equal(after, expected,
                                           [](const auto& a, const auto& b) {
                                               return a.first == b.first && a.second.data == b.second.data;
                                           }))
                << listed.module << " " << listed.descriptor->paramId;
        }
    }
}

TEST(PresetProperties, OnlyASizeThatDiffersIsWrittenAsOverride) {
    Preset preset = presetOf(test::thirdEngine);
    preset.parameters[{-1, -39}] = bytes({1});     // First of chunk 0, of its size.
    preset.parameters[{-1, -38}] = bytes({7, 8});  // Second, one byte more.
    const Bytes blob = valuesOf(preset).at(chunkName(0)).data;
    ASSERT_GE(blob.size(), 11U);
    EXPECT_EQ(Bytes(blob.begin(), blob.begin() + 11), bytes({0, 0, 1, 0, 1, 0, 2, 0, 1, 7, 8}));
    EXPECT_EQ(read(valuesOf(preset)).parameters, preset.parameters);
}

TEST(PresetProperties, ParametersAtTheirDefaultsAreLeftOut) {
    Preset preset = presetOf(test::thirdEngine);
    preset.parameters[{-1, -22}] = bytes({0, 0, 0x80, 0x3F});
    preset.parameters[{-1, -26}] = {};
    EXPECT_TRUE(read(valuesOf(preset)).parameters.empty());
}

TEST(PresetProperties, ABlobThatIsShortMissingOrNoneGivesDefaults) {
    Preset preset = presetOf(test::thirdEngine);
    preset.parameters[{-1, -39}] = bytes({1});
    preset.parameters[{-1, -22}] = bytes({1, 1, 1, 1});
    const Values whole = valuesOf(preset);
    Values values = whole;
    values[chunkName(0)].data.resize(5);
    EXPECT_EQ(read(values).parameters, (std::map<ParameterPlace, Bytes>{{{-1, -39}, bytes({1})}}));
    for (const std::size_t size : {0U, 3U, 4U}) {
        values[chunkName(0)].data.resize(size);
        EXPECT_TRUE(read(values).parameters.empty()) << size;
    }
    values.erase(chunkName(0));
    EXPECT_TRUE(read(values).parameters.empty());
    values = whole;
    values[chunkName(0)].type = types::string;
    EXPECT_TRUE(read(values).parameters.empty());
}

TEST(PresetProperties, TheSelectionIsFollowed) {
    const std::string other = "{00112233-4455-6677-8899-aabbccddeeff}";
    Values values;
    Preset preset = presetOf(test::secondEngine);
    preset.parameters[{0, 0}] = bytes({1});
    for (const auto& [name, value] : valuesOf(preset)) {
        values[name.starts_with(className) ? other + name.substr(className.size()) : name] = value;
    }
    values["{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},4"] = text("00112233445566778899AABBCCDDEEFF");
    EXPECT_EQ(read(values).parameters, preset.parameters);
}

TEST(PresetProperties, WhatIsNoPresetIsRefusedWithTheReason) {
    const std::string selection = "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},4";
    const Values right = valuesOf(presetOf(test::thirdEngine));
    const auto refusalWith = [&](const std::string& name, const RegistryValue& value) {
        Values values = right;
        values[name] = value;
        return refusalOf(values);
    };
    const auto refusalWithout = [&](const std::string& name) {
        Values values = right;
        values.erase(name);
        return refusalOf(values);
    };
    EXPECT_EQ(refusalOf(right), "");
    EXPECT_EQ(refusalWithout(selection), "the selection " + selection + " is missing or no text");
    EXPECT_EQ(refusalWith(selection, text("abc")), "the selection " + selection + " is no GUID: 'abc'");
    EXPECT_EQ(refusalWith(selection, {types::string, {}}), "the selection " + selection + " is no GUID: ''");
    EXPECT_NE(refusalWithout(className + ",0"), "");
    EXPECT_NE(refusalWith(className + ",0", {types::dword, bytes({0, 0, 0, 0})}), "");
    EXPECT_NE(refusalWith(className + ",0", {types::dword, bytes({1, 0, 0})}), "");
    EXPECT_NE(refusalWith(className + ",0", {types::binary, bytes({1, 0, 0, 0})}), "");
    EXPECT_NE(refusalWithout(className + ",2"), "");
    EXPECT_NE(refusalWith(className + ",2", text(className)).find("unknown"), std::string::npos);
    EXPECT_EQ(refusalWithout(className + ",1"), "") << "no flags are none";
}

}  // namespace
}  // namespace korva::tool
