#include <nlohmann/json.hpp>

#include <algorithm>

#include "tests/cli/preset_tool_test.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;

constexpr const char* devicesKey = "HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\MMDevices\\Audio";
constexpr const char* friendlyName = "{a45c254e-df1c-4efd-8020-67d146a850e0},14";

class EndpointCommand : public PresetToolTest {
protected:
    [[nodiscard]] Outcome endpoint(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "endpoint");
        Launch launch = tool(std::move(arguments));
        launch.environment["KORVA_REGISTRY"] = registryPath();
        return run(launch);
    }
    /// What a command that goes well prints as JSON.
    [[nodiscard]] Json json(std::vector<std::string> arguments) const {
        arguments.push_back("--json");
        const Outcome outcome = endpoint(std::move(arguments));
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.error, "");
        return Json::parse(outcome.output);
    }
    /// The identifier of an endpoint that `add` makes.
    [[nodiscard]] std::string add(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), "add");
        const Outcome outcome = endpoint(std::move(arguments));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_EQ(outcome.error, "");
        return lastLine(outcome.output);
    }
    static std::string lastLine(std::string text) {
        EXPECT_TRUE(text.ends_with('\n'));
        text.pop_back();
        return text.substr(text.rfind('\n') + 1);
    }
    [[nodiscard]] std::string deviceKey(const std::string& id, const std::string& flow = "Render") const {
        return std::string(devicesKey) + "\\" + flow + "\\" + id.substr(id.find(".{") + 1);
    }
    [[nodiscard]] bool hasKey(const std::string& key) const { return registry({"list", key}).exitCode == 0; }
    static std::string setsKey(const std::string& id) { return "HKLM\\Software\\Veltrane\\APO\\" + id; }
};

TEST_F(EndpointCommand, AddPrintsTheIdentifierAloneOnItsLastLine) {
    const Outcome outcome = endpoint({"add", "Speakers", "--volume", "0.25"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    const std::string id = lastLine(outcome.output);
    EXPECT_EQ(outcome.output, "Added the render endpoint Speakers, active, at volume 0.25:\n" + id + "\n");
    EXPECT_EQ(id.size(), 55U);
    EXPECT_TRUE(id.starts_with("{0.0.0.00000000}.{"));
}

TEST_F(EndpointCommand, AddMakesWhatAnInstallerWould) {
    const std::string id = add({"Speakers"});
    EXPECT_EQ(output({"get", deviceKey(id), "DeviceState"}), "1\n");
    EXPECT_EQ(output({"get", deviceKey(id) + "\\Properties", friendlyName}), "Speakers\n");
    for (const char* const set : {"Default", "User", "Volatile"}) {
        const Json listed = Json::parse(output({"list", setsKey(id) + "\\FxProperties\\" + set, "--json"}));
        EXPECT_TRUE(listed["values"].empty());
        EXPECT_TRUE(listed["keys"].empty());
    }
    EXPECT_TRUE(Json::parse(output({"list", "HKLM\\Software\\Kestrelwright", "--json"}))["keys"].empty());
}

TEST_F(EndpointCommand, ARecorderThatIsDisabledKeepsItsVolume) {
    const std::string id = add({"Microphone", "--capture", "--inactive", "--volume", "0.1"});
    EXPECT_TRUE(id.starts_with("{0.0.1.00000000}.{"));
    EXPECT_EQ(output({"get", deviceKey(id, "Capture"), "DeviceState"}), "2\n");
    const Json shown = json({"show", id});
    EXPECT_EQ(shown["flow"], "capture");
    EXPECT_EQ(shown["state"], "disabled");
    EXPECT_EQ(shown["volume"], 0.1);
    EXPECT_EQ(shown["name"], "Microphone");
}

TEST_F(EndpointCommand, AddAsJsonIsOneValue) {
    const Json added = json({"add", "Speakers"});
    EXPECT_EQ(added["flow"], "render");
    EXPECT_EQ(added["state"], "active");
    EXPECT_EQ(added["volume"], 1.0);
    EXPECT_EQ(added["muted"], false);
    EXPECT_EQ(json({"list"})[0], added);
}

TEST_F(EndpointCommand, ListHasALineForEach) {
    EXPECT_EQ(endpoint({"list"}).output, "");
    EXPECT_EQ(json({"list"}), Json::array());
    const std::string microphone = add({"Microphone", "--capture"});
    const std::string speakers = add({"Speakers", "--volume", "0.5"});
    const std::string phones = add({"Phones", "--inactive"});
    EXPECT_EQ(endpoint({"list"}).output, speakers + "  render   active       0.5    Speakers\n" + phones +
                                             "  render   disabled     1      Phones\n" + microphone +
                                             "  capture  active       1      Microphone\n");
    const Json all = json({"list"});
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all[0]["id"], speakers);
    EXPECT_EQ(all[1]["id"], phones);
    EXPECT_EQ(all[2]["id"], microphone);
}

TEST_F(EndpointCommand, NamesMayBeAnyTextAndMayBeTheSame) {
    const std::vector<std::string> names = {"Lautspr\303\244cher \360\237\224\212",
                                            "two words",
                                            "[a, b]",
                                            "a=b",
                                            "'quoted' \"twice\"",
                                            "a\\b/c",
                                            "Same",
                                            "Same",
                                            " "};
    std::vector<std::string> ids;
    for (const std::string& name : names) {
        ids.push_back(add({name}));
    }
    const Json all = json({"list"});
    ASSERT_EQ(all.size(), names.size());
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(all[i]["name"], names[i]);
        EXPECT_EQ(all[i]["id"], ids[i]);
    }
    std::ranges::sort(ids);
    EXPECT_EQ(std::ranges::adjacent_find(ids), ids.end());
}

TEST_F(EndpointCommand, ANameThatLooksLikeAnOptionGoesBehindTheMark) {
    EXPECT_EQ(json({"show", add({"--", "--json"})})["name"], "--json");
}

TEST_F(EndpointCommand, TerminalsDoNotActOnNames) {
    const std::string id = add({"a\033[2Jb\nc"});
    const std::string text = endpoint({"list"}).output + endpoint({"show", id}).output;
    EXPECT_EQ(text.find('\033'), std::string::npos);
    EXPECT_NE(text.find("a\\x1B[2Jb\\x0Ac"), std::string::npos);
    EXPECT_EQ(json({"show", id})["name"], "a\033[2Jb\nc");
}

TEST_F(EndpointCommand, WhatIsNoNameOrVolumeAddsNothing) {
    for (const char* const volume :
         {"-0.1", "1.01", "nan", "NaN", "inf", "-inf", "half", "0.5x", " 0.5", "1e9"}) {
        EXPECT_TRUE(failedWith(endpoint({"add", "Speakers", std::string("--volume=") + volume}),
                               {"--volume", "from 0 to 1", std::string("'") + volume + "'"}))
            << volume;
    }
    EXPECT_TRUE(failedWith(endpoint({"add", "Speakers", "--volume", ""}), {"from 0 to 1", "''"}));
    EXPECT_TRUE(failedWith(endpoint({"add", ""}), {"name", "empty"}));
    EXPECT_TRUE(failedWith(endpoint({"add", "\377\376"}), {"not UTF-8"}));
    EXPECT_TRUE(failedWith(endpoint({"add"}), {"NAME"}));
    EXPECT_EQ(json({"list"}), Json::array());
    EXPECT_FALSE(hasKey("HKLM\\Software\\Kestrelwright"));
}

TEST_F(EndpointCommand, EveryVolumeFromSilenceToFullIsKept) {
    for (const char* const volume : {"0", "1", "0.5", "1e-3", "0.333333"}) {
        const Json shown = json({"show", add({"Speakers", "--volume", volume})});
        EXPECT_EQ(shown["volume"].get<double>(), std::stod(volume));
    }
}

TEST_F(EndpointCommand, SetChangesWhatItIsGivenAndNothingElse) {
    const std::string id = add({"Speakers", "--volume", "0.5"});
    const std::string other = add({"Phones"});
    const Json before = json({"show", other});
    EXPECT_EQ(json({"set", id, "--volume", "0.25"})["volume"], 0.25);
    EXPECT_EQ(json({"set", id, "--name", "Monitors"})["name"], "Monitors");
    const Json now = json({"set", id, "--inactive"});
    EXPECT_EQ(now["state"], "disabled");
    EXPECT_EQ(now["volume"], 0.25);
    EXPECT_EQ(now["name"], "Monitors");
    const Outcome all = endpoint({"set", id, "--active", "--name", "New", "--volume", "1"});
    EXPECT_EQ(all.exitCode, 0);
    EXPECT_EQ(all.output, id + "  render   active       1      New\n");
    EXPECT_EQ(json({"show", other}), before);
}

TEST_F(EndpointCommand, SetRefusesAllWhenOneIsWrong) {
    const std::string id = add({"Speakers"});
    const Json before = json({"show", id});
    EXPECT_TRUE(failedWith(endpoint({"set", id, "--name", "New", "--volume", "2"}), {"--volume", "'2'"}));
    EXPECT_TRUE(failedWith(endpoint({"set", id, "--volume", "0.5", "--name", ""}), {"name", "empty"}));
    EXPECT_TRUE(failedWith(endpoint({"set", id}), {"nothing to set", "--volume"}));
    EXPECT_TRUE(failedWith(endpoint({"set", id, "--active", "--inactive"}), {"--inactive"}));
    EXPECT_EQ(json({"show", id}), before);
}

TEST_F(EndpointCommand, AnUnknownIdentifierIsNamed) {
    const std::string id = add({"Speakers"});
    const std::string gone = add({"Phones"});
    ASSERT_EQ(endpoint({"remove", gone}).exitCode, 0);
    for (const std::string& unknown :
         {gone, std::string("Speakers"), std::string(), id + "x", id.substr(17),
          "{0.0.1.00000000}" + id.substr(16), std::string("{0.0.0.00000000}.{..\\..}")}) {
        for (const std::vector<std::string>& command : {std::vector<std::string>{"show", unknown},
                                                        {"set", unknown, "--volume", "0.5"},
                                                        {"remove", unknown}}) {
            EXPECT_TRUE(failedWith(endpoint(command), {"no endpoint", "'" + unknown + "'"})) << command[0];
        }
    }
    EXPECT_EQ(json({"list"}).size(), 1U);
}

TEST_F(EndpointCommand, RemoveTakesTheEndpointAndItsSetsAndNothingElse) {
    const std::string kept = add({"Speakers"});
    const std::string before = exported("HKLM");
    const std::string id = add({"Phones"});
    EXPECT_NE(exported("HKLM"), before);
    const Outcome outcome = endpoint({"remove", id});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "Removed " + id + " and its presets: Phones\n");
    EXPECT_EQ(exported("HKLM"), before);
    EXPECT_EQ(json({"remove", kept})["name"], "Speakers");
    EXPECT_TRUE(hasKey("HKLM\\Software\\Kestrelwright"));
    EXPECT_TRUE(hasKey(devicesKey));
}

TEST_F(EndpointCommand, TheIdentifierIsTakenInAnyCase) {
    std::string id = add({"Speakers"});
    std::ranges::transform(id, id.begin(), [](char c) { return c >= 'a' && c <= 'f' ? char(c - 32) : c; });
    EXPECT_EQ(json({"set", id, "--volume", "0.5"})["volume"], 0.5);
    EXPECT_EQ(endpoint({"remove", id}).exitCode, 0);
    EXPECT_EQ(json({"list"}), Json::array());
}

TEST_F(EndpointCommand, ShowTellsWhichEffectsHaveAPreset) {
    const std::string id = add({"Speakers"});
    EXPECT_EQ(endpoint({"show", id}).output, id + "\n  name    Speakers\n  flow    render\n  state   active\n"
                                                  "  volume  1\n  sfx     no preset\n  mfx     no preset\n"
                                                  "  efx     no preset\n");
    ASSERT_EQ(
        preset({"install", file(presetJson(thirdEngine, "")), "--endpoint", id, "--effect", "mfx", "--quiet"})
            .exitCode,
        0);
    EXPECT_NE(endpoint({"show", id})
                  .output.find(std::string("  mfx     engine ") + thirdEngine + ", preset version 1\n"),
              std::string::npos);
    const Json presets = json({"show", id})["presets"];
    EXPECT_EQ(presets["mfx"]["engine"], thirdEngine);
    EXPECT_TRUE(presets["sfx"].is_null());
    EXPECT_TRUE(presets["efx"].is_null());
}

TEST_F(EndpointCommand, OddValuesOfOthersAreShownAsWhatTheyCountAs) {
    const std::string id = add({"Speakers"});
    quietly({"set", deviceKey(id), "DeviceState", "sz", "on"});
    quietly({"set", deviceKey(id), "MasterVolume", "dword", "0x7fc00000"});
    quietly({"set", deviceKey(id), "Muted", "dword", "1"});
    quietly({"set", deviceKey(id) + "\\Properties", friendlyName, "dword", "5"});
    const Json shown = json({"show", id});
    EXPECT_EQ(shown["state"], "not present");
    EXPECT_EQ(shown["volume"], 1.0);
    EXPECT_EQ(shown["muted"], true);
    EXPECT_EQ(shown["name"], "");
    EXPECT_NE(endpoint({"list"}).output.find("not present  1 muted"), std::string::npos);
    EXPECT_EQ(endpoint({"remove", id}).exitCode, 0);
}

TEST_F(EndpointCommand, AnEndpointWithoutPropertiesGetsAName) {
    const std::string id = add({"Speakers"});
    quietly({"delete", deviceKey(id) + "\\Properties"});
    EXPECT_EQ(json({"show", id})["name"], "");
    EXPECT_EQ(json({"set", id, "--name", "New"})["name"], "New");
}

TEST_F(EndpointCommand, AFileThatIsNoRegistryIsAnErrorAndStays) {
    writeBytes(registryPath(), "This is something else, and long enough to be told from a registry.");
    EXPECT_TRUE(failedWith(endpoint({"add", "Speakers"}), {registryPath(), "is no registry"}));
    EXPECT_TRUE(failedWith(endpoint({"list"}), {registryPath(), "is no registry"}));
}

}  // namespace
}  // namespace korva::test
