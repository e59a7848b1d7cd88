#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/preset_tool_test.h"

namespace korva::test {
namespace {

const std::string oneFloat = R"({"module": -1, "id": -22, "floats": [0.1]})";
const std::string oddSizes =
    R"({"module": -1, "id": -26, "bytes": "0102"}, {"module": -1, "id": -16, "bytes": ""},
    {"module": 0, "id": 3, "bytes": "00"}, {"module": 0, "id": 8, "bytes": "ff"})";

class PresetInstall : public PresetToolTest {
protected:
    /// All values of the set with their types and bytes.
    [[nodiscard]] std::string set() const { return exported(userSetKey); }
    [[nodiscard]] bool hasSet() const { return registry({"list", userSetKey}).exitCode == 0; }
};

TEST_F(PresetInstall, SaysWhatItInstalled) {
    const Outcome outcome = preset(
        {"install", file(presetJson(thirdEngine, oneFloat)), "--endpoint", "speakers", "--effect", "mfx"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output, "Installed " + path("preset.json") + " as the mfx preset of speakers: engine " +
                                  thirdEngine + ", 1 parameter set, 4 chunks, 4511 bytes\n");
}

TEST_F(PresetInstall, JsonSaysTheSame) {
    const Outcome outcome = preset({"install", file(presetJson(thirdEngine, oneFloat)), "--endpoint",
                                    "speakers", "--effect", "mfx", "--json"});
    const auto json = nlohmann::json::parse(outcome.output);
    EXPECT_EQ(json["endpoint"], "speakers");
    EXPECT_EQ(json["effect"], "mfx");
    EXPECT_EQ(json["engine"], thirdEngine);
    EXPECT_EQ(json["parametersSet"], 1);
}

TEST_F(PresetInstall, DumpGivesWhatWasInstalled) {
    install(presetJson(thirdEngine, oneFloat));
    EXPECT_EQ(dump(), R"({
  "engine": "{c9f475bc-13e4-6150-ae88-790995afc7c1}",
  "presetVersion": 1,
  "hardware": false,
  "parameters": [
    {"module": -1, "id": -22, "floats": [0.1]}
  ]
}
)");
}

TEST_F(PresetInstall, WhatDumpGivesChangesNothing) {
    for (const std::string& parameters : {std::string(), oneFloat, oddSizes}) {
        for (const char* const effect : {"sfx", "mfx", "efx"}) {
            install(presetJson(thirdEngine, parameters), effect);
            const std::string before = set();
            const std::string text = dump(effect);
            install(text, effect);
            EXPECT_EQ(set(), before);
            EXPECT_EQ(dump(effect), text);
        }
    }
}

TEST_F(PresetInstall, EffectsAndEndpointsKeepTheirOwnPresets) {
    install(presetJson(thirdEngine, oneFloat), "sfx");
    install(presetJson(secondEngine, ""), "efx");
    EXPECT_NE(dump("sfx").find(thirdEngine), std::string::npos);
    EXPECT_NE(dump("efx").find(secondEngine), std::string::npos);
    EXPECT_TRUE(failedWith(run(dumpLaunch("mfx")),
                           {"the mfx preset of the endpoint 'speakers'", "the selection", "is missing"}));
    EXPECT_TRUE(failedWith(preset({"dump", "--endpoint", "phones", "--effect", "sfx"}),
                           {"'phones' has no presets", "korva preset install"}));
}

TEST_F(PresetInstall, NothingIsLeftOfALargerEnginesPreset) {
    install(presetJson(thirdEngine, oneFloat));
    const std::string before = set();
    install(presetJson(firstEngine, R"({"module": 5, "id": 152, "bools": [true]})"));
    EXPECT_NE(set().find(",3012"), std::string::npos);
    install(presetJson(thirdEngine, oneFloat));
    EXPECT_EQ(set().find(",3012"), std::string::npos);
    EXPECT_EQ(set(), before);
}

TEST_F(PresetInstall, OtherValuesOfTheSetStay) {
    quietly({"set", userSetKey, "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},7", "sz", "kept"});
    install(presetJson(thirdEngine, oneFloat));
    EXPECT_EQ(output({"get", userSetKey, "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},7"}), "kept\n");
}

TEST_F(PresetInstall, AnotherSelectionIsReplacedByTheClass) {
    const std::string selection = "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},5";
    quietly({"set", userSetKey, selection, "sz", "{00112233-4455-6677-8899-aabbccddeeff}"});
    install(presetJson(thirdEngine, oneFloat));
    EXPECT_EQ(output({"get", userSetKey, selection}), "{8f3540df-18b0-4943-b916-d4a79801587d}\n");
}

TEST_F(PresetInstall, AFaultyFileWritesNothingAndNamesTheFirstFault) {
    const std::string faulty = presetJson(
        thirdEngine, R"({"module": 0, "id": 3, "floats": [1]}, {"module": 9, "id": 3, "bytes": ""})");
    EXPECT_TRUE(failedWith(run(installLaunch(file(faulty))),
                           {"preset.json: parameters[0].floats: expected 12 values, got 1"}));
    EXPECT_FALSE(std::filesystem::exists(registryPath()));
    EXPECT_TRUE(failedWith(run(installLaunch(file("{"))), {"preset.json:1:2: syntax error"}));
    EXPECT_TRUE(failedWith(run(installLaunch(path("none.json"))), {"none.json", "No such file"}));
}

TEST_F(PresetInstall, AnEndpointWithSlashesOrNoNameIsRefused) {
    const std::string right = file(presetJson(thirdEngine, ""));
    for (const char* const endpoint : {"a\\b", "a/b", "\\", ""}) {
        EXPECT_TRUE(failedWith(preset({"install", right, "--endpoint", endpoint, "--effect", "efx"}),
                               {"--endpoint", endpoint}))
            << endpoint;
        EXPECT_TRUE(failedWith(preset({"dump", "--endpoint", endpoint, "--effect", "efx"}), {"--endpoint"}))
            << endpoint;
    }
    EXPECT_FALSE(std::filesystem::exists(registryPath()));
}

TEST_F(PresetInstall, AnEndpointThatIsNoNameOfAKeyIsRefused) {
    const std::string right = file(presetJson(thirdEngine, ""));
    for (const std::string& endpoint : {std::string("\xFF"), std::string(256, 'x')}) {
        EXPECT_TRUE(failedWith(preset({"install", right, "--endpoint", endpoint, "--effect", "efx"}),
                               {"cannot install", "not UTF-8 or too long"}));
    }
}

TEST_F(PresetInstall, AnUnknownEffectIsRefusedWithThoseThereAre) {
    const std::string right = file(presetJson(thirdEngine, ""));
    EXPECT_TRUE(failedWith(preset({"install", right, "--endpoint", "e", "--effect", "gfx"}),
                           {"--effect", "sfx, mfx or efx", "'gfx'"}));
    EXPECT_TRUE(failedWith(preset({"dump", "--endpoint", "e", "--effect", ""}), {"sfx, mfx or efx"}));
}

TEST_F(PresetInstall, MissingOptionsAreNamed) {
    EXPECT_TRUE(failedWith(preset({"install", "x.json", "--effect", "efx"}),
                           {"--endpoint", "korva preset install --help"}));
    EXPECT_TRUE(failedWith(preset({"dump", "--endpoint", "e"}), {"--effect", "korva preset dump --help"}));
}

TEST_F(PresetInstall, AReadOnlyRegistryKeepsItsPreset) {
    install(presetJson(thirdEngine, oneFloat));
    const std::string before = dump();
    Launch launch = installLaunch(file(presetJson(firstEngine, "")));
    launch.obeysPermissions = true;
    namespace fs = std::filesystem;
    fs::permissions(registryPath(), fs::perms::owner_read);
    fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
    const Outcome refused = run(launch);
    fs::permissions(folder, fs::perms::owner_all);
    fs::permissions(registryPath(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_TRUE(failedWith(refused, {"cannot install", "no right", registryPath()}));
    EXPECT_EQ(dump(), before);
}

TEST_F(PresetInstall, ARegistryThatCannotGrowKeepsItsPreset) {
    install(presetJson(thirdEngine, oneFloat));
    const std::string before = dump();
    Launch launch = installLaunch(file(presetJson(
        thirdEngine, R"({"module": -1, "id": -26, "bytes": ")" + std::string(130'000, 'a') + "\"}")));
    launch.fileSizeLimit = 40 << 10;
    EXPECT_TRUE(failedWith(run(launch), {"cannot install", registryPath()}));
    EXPECT_EQ(dump(), before);
    install(presetJson(secondEngine, ""));
    EXPECT_NE(dump().find(secondEngine), std::string::npos);
}

TEST_F(PresetInstall, AForeignFileInPlaceOfTheRegistryIsLeftAlone) {
    const std::string foreign(10'000, 'x');
    writeBytes(registryPath(), foreign);
    EXPECT_TRUE(failedWith(run(installLaunch(file(presetJson(thirdEngine, "")))),
                           {"cannot install", "no registry", registryPath()}));
    EXPECT_TRUE(failedWith(run(dumpLaunch()), {"cannot read", "no registry"}));
    EXPECT_EQ(readBytes(registryPath()), foreign);
}

TEST_F(PresetInstall, AWrongSelectionIsSaidToBe) {
    install(presetJson(thirdEngine, oneFloat));
    quietly({"set", userSetKey, "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},5", "sz", "nothing"});
    EXPECT_TRUE(failedWith(run(dumpLaunch()), {"the efx preset of the endpoint 'speakers'", "is no GUID"}));
}

/// The first block of JSON in the document for those who write presets.
std::string documentedPreset() {
    std::ifstream document(KORVA_SOURCE "/docs/presets.md");
    std::ostringstream text;
    text << document.rdbuf();
    const std::string all = text.str();
    const std::size_t begin = all.find("```json\n") + 8;
    return all.substr(begin, all.find("```", begin) - begin);
}

TEST_F(PresetInstall, TheDocumentsExampleIsTheFileOfTheExamplesAndCanBeInstalled) {
    const std::string text = documentedPreset();
    ASSERT_GT(text.size(), 100U);
    EXPECT_EQ(readBytes(KORVA_SOURCE "/examples/presets/twelve_bands.json"), text);
    install(text);
    EXPECT_EQ(dump(), text) << "it is written as dump writes it";
}

}  // namespace
}  // namespace korva::test
