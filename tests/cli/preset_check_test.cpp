#include <nlohmann/json.hpp>

#include "tests/cli/preset_tool_test.h"

namespace korva::test {
namespace {

class PresetCheck : public PresetToolTest {
protected:
    static std::string faulty() {
        return presetJson(thirdEngine,
                          R"({"module": 0, "id": 3, "floats": [1]}, {"module": 7, "id": 0, "bytes": ""})");
    }
};

TEST_F(PresetCheck, ARightPresetIsSummedUpInALine) {
    const Outcome outcome = check(presetJson(thirdEngine, R"({"module": 0, "id": 8, "bools": [true]})"));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output,
              path("preset.json") + ": engine " + thirdEngine + ", 1 parameter set, 4 chunks, 4511 bytes\n");
}

TEST_F(PresetCheck, EveryFaultHasALineAndTheExitCodeIsOne) {
    const Outcome outcome = check(faulty());
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.output, path("preset.json") + ": parameters[0].floats: expected 12 values, got 1\n" +
                                  path("preset.json") +
                                  ": parameters[1].module: the engine has modules -1 to 0, not 7\n");
}

TEST_F(PresetCheck, JsonHasTheFaultsInAList) {
    const Outcome outcome = check(faulty(), {"--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    const auto json = nlohmann::json::parse(outcome.output);
    ASSERT_EQ(json["faults"].size(), 2U);
    EXPECT_EQ(json["faults"][0]["place"], "parameters[0].floats");
    EXPECT_EQ(json["faults"][0]["message"], "expected 12 values, got 1");
    EXPECT_FALSE(json.contains("engine"));
}

TEST_F(PresetCheck, JsonOfARightPresetHasTheSummaryAndNoFaults) {
    const Outcome outcome = check(presetJson(secondEngine, ""), {"--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    const auto json = nlohmann::json::parse(outcome.output);
    EXPECT_TRUE(json["faults"].empty());
    EXPECT_EQ(json["engine"], secondEngine);
    EXPECT_EQ(json["presetVersion"], 1);
    EXPECT_EQ(json["hardware"], false);
    EXPECT_EQ(json["parametersSet"], 0);
    EXPECT_EQ(json["chunks"], 4);
    EXPECT_EQ(json["bytes"], 4522 + 4 * 4);
}

TEST_F(PresetCheck, JsonTellsLineAndColumnOfWhatIsNoJson) {
    const Outcome outcome = check("{\n!", {"--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    const auto json = nlohmann::json::parse(outcome.output);
    ASSERT_EQ(json["faults"].size(), 1U);
    EXPECT_EQ(json["faults"][0]["line"], 2);
    EXPECT_EQ(json["faults"][0]["column"], 1);
}

TEST_F(PresetCheck, TextThatIsNotUtf8IsAFaultAndJsonStaysJson) {
    EXPECT_EQ(check("{\"\xFF\": 1}").exitCode, 1);
    const Outcome outcome = check("{\"\xFF\": 1}", {"--json"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(nlohmann::json::parse(outcome.output)["faults"].size(), 1U);
}

TEST_F(PresetCheck, AControlCharacterLeavesAFaultOneLine) {
    const Outcome outcome = check(R"({"a\nb": 1})");
    EXPECT_NE(outcome.output.find("'a\\x0Ab'"), std::string::npos) << outcome.output;
}

TEST_F(PresetCheck, AFileThatCannotBeReadIsAnError) {
    EXPECT_TRUE(failedWith(preset({"check", path("none.json")}), {"none.json", "No such file"}));
    EXPECT_TRUE(failedWith(preset({"check", folder.string()}), {"it is a folder"}));
    EXPECT_TRUE(failedWith(check(""), {"preset.json", "it is empty"}));
}

TEST_F(PresetCheck, AFileLargerThanAnyPresetIsAnError) {
    std::filesystem::resize_file(file("{"), (std::uintmax_t{64} << 20) + 1);
    EXPECT_TRUE(failedWith(preset({"check", path("preset.json")}), {"larger than 64 MiB"}));
}

TEST_F(PresetCheck, StandardInputIsReadForADash) {
    Launch launch = presetLaunch({"check", "-"});
    launch.input = presetJson(thirdEngine, "");
    const Outcome outcome = run(launch);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.output.starts_with("standard input: engine ")) << outcome.output;
    launch.input = "[]";
    EXPECT_EQ(run(launch).exitCode, 1);
    launch.input = "";
    EXPECT_TRUE(failedWith(run(launch), {"standard input", "it is empty"}));
}

TEST_F(PresetCheck, NoRegistryIsMade) {
    EXPECT_EQ(check(presetJson(thirdEngine, "")).exitCode, 0);
    EXPECT_FALSE(std::filesystem::exists(registryPath()));
}

TEST_F(PresetCheck, HelpNamesTheCommands) {
    const Outcome outcome = preset({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    for (const char* const part : {"check", "install", "dump", "Examples", "docs/presets.md"}) {
        EXPECT_NE(outcome.output.find(part), std::string::npos) << part;
    }
    EXPECT_TRUE(failedWith(preset({}), {"subcommand", "korva preset --help"}));
}

}  // namespace
}  // namespace korva::test
