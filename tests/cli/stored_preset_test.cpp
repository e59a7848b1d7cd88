#include "korva/preset/stored_preset.h"

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "korva/errors.h"
#include "korva/preset/preset_text.h"
#include "platform/property_key.h"
#include "tests/cli/preset_tool_test.h"

namespace korva::tool {
namespace {

using platform::RegistryChange;
using Values = std::map<std::string, platform::RegistryValue>;

constexpr auto kind = params::EffectKind::stream;

/// Properties that another preset takes the place of before the n-th read.
class ChangingProperties {
public:
    explicit ChangingProperties(const Preset& preset) { install(preset); }

    void install(const Preset& preset) {
        for (const RegistryChange& change : presetChanges(preset, "Set", kind)) {
            if (change.kind == RegistryChange::Kind::setValue) {
                values[change.name] = change.value;
            } else {
                values.erase(change.name);
            }
        }
    }
    void installBefore(int read, const Preset& preset) { installations[read] = preset; }

    [[nodiscard]] PropertyReader reader() {
        return [this](const PROPERTYKEY& key) {
            if (const auto due = installations.find(reads); due != installations.end()) {
                install(due->second);
            }
            ++reads;
            const auto found = values.find(platform::KeyToText(key));
            return found == values.end() ? std::nullopt : std::optional(found->second);
        };
    }

    int reads = 0;

private:
    Values values;
    std::map<int, Preset> installations;
};

/// A preset that differs in each chunk from those of other versions.
Preset numbered(std::uint32_t version, const char* engine = test::thirdEngine) {
    const std::vector<std::byte> payload = {static_cast<std::byte>(version), std::byte{1}, std::byte{1}};
    Preset preset{.engineId = platform::GuidFromText(engine), .presetVersion = version};
    for (const std::int32_t id : {-39, -16, -14, -13}) {
        preset.parameters[{-1, id}] = payload;
    }
    return preset;
}

TEST(StoredPreset, AtRestItTakesTwoLooks) {
    ChangingProperties properties(numbered(1));
    EXPECT_EQ(presetText(readPresetAtRest(kind, properties.reader())), presetText(numbered(1)));
    EXPECT_EQ(properties.reads, 2 * (4 + 4));
}

TEST(StoredPreset, WheneverAnotherIsInstalledItIsTheOldOrTheNew) {
    for (const char* const engine : {test::thirdEngine, test::firstEngine}) {
        for (int read = 0; read < 40; ++read) {
            ChangingProperties properties(numbered(1));
            properties.installBefore(read, numbered(2, engine));
            const std::string text = presetText(readPresetAtRest(kind, properties.reader()));
            EXPECT_TRUE(text == presetText(numbered(1)) || text == presetText(numbered(2, engine)))
                << read << "\n"
                << text;
        }
    }
}

TEST(StoredPreset, AfterTwoInstallationsItIsOneOfTheThree) {
    for (int first = 0; first < 24; ++first) {
        for (int second = first; second < 24; ++second) {
            ChangingProperties properties(numbered(1));
            properties.installBefore(first, numbered(2));
            properties.installBefore(second, numbered(3));
            const Preset preset = readPresetAtRest(kind, properties.reader());
            EXPECT_EQ(presetText(preset), presetText(numbered(preset.presetVersion)))
                << first << " " << second;
        }
    }
}

TEST(StoredPreset, WhatComesWhileThereIsNoneIsWholeOrNone) {
    ChangingProperties empty(numbered(1));
    PropertyReader reader = empty.reader();
    int reads = 0;
    const auto laterThere = [&](const PROPERTYKEY& key) {
        return reads++ < 1 ? std::optional<platform::RegistryValue>() : reader(key);
    };
    EXPECT_EQ(presetText(readPresetAtRest(kind, laterThere)), presetText(numbered(1)));
    EXPECT_THROW((void)readPresetAtRest(kind, [](const PROPERTYKEY&) { return std::nullopt; }), NoPreset);
}

TEST(StoredPreset, ValuesThatNeverRestAreGivenUp) {
    ChangingProperties properties(numbered(1));
    for (int read = 0; read < 2000; ++read) {
        properties.installBefore(read, numbered(static_cast<std::uint32_t>(read) + 1));
    }
    EXPECT_THROW((void)readPresetAtRest(kind, properties.reader()), ToolError);
}

}  // namespace
}  // namespace korva::tool
