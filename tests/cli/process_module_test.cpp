#include <signal.h>

#include "korva/preset/preset_file.h"
#include "tests/cli/folder_watch.h"
#include "tests/cli/module_tool_test.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

constexpr const char* module = "PELLUX64";

class ProcessModule : public ModuleToolTest {
protected:
    using Values = std::vector<std::vector<std::uint8_t>>;

    /// The values of all parameters of that number that a module was sent.
    static Values sent(const Recording& recording, int bank, int id) {
        Values values;
        for (const RecordedCall& call : callsOf("SetParameter", recording.calls())) {
            if (call.number("bank") == bank && call.number("id") == id) {
                values.push_back(call.bytes("data").value());
            }
        }
        return values;
    }
    static std::vector<std::uint8_t> bytesOf(float number) {
        const auto* const first = reinterpret_cast<const std::uint8_t*>(&number);
        return {first, first + sizeof number};
    }
    [[nodiscard]] std::string exportedSets(const std::string& id) const {
        return exported("HKLM\\Software\\Veltrane\\APO\\" + id);
    }
};

TEST_F(ProcessModule, TheOutputIsWhatTheModuleAloneGives) {
    for (const std::size_t bufferFrames : std::initializer_list<std::size_t>{480, 1000, 512, 77}) {
        ModuleAlone eq = alone(equaliserPreset);
        EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--buffer", std::to_string(bufferFrames)}),
                             eq.playInBuffers(sound.samples, bufferFrames)))
            << bufferFrames;
    }
}

TEST_F(ProcessModule, TheModuleIsHeard) {
    EXPECT_FALSE(sameBits(played({"--preset", equaliserPreset}), sound.samples));
    EXPECT_FALSE(sameBits(played({"--preset", voicePreset}), played({"--preset", equaliserPreset})));
}

TEST_F(ProcessModule, EightChannelsGetToTheModulesPlanesAndBack) {
    sound = makeNoiseFor(0x63F, 5000);
    writeSound(path("in.wav"), sound);
    rt::EngineFormat format;
    format.Assign(48000, 8, 0x63F);
    ModuleAlone eq(KORVA_EXAMPLE_MODULES "/PELLUX64.so", tool::presetOfFile(equaliserPreset), format);
    EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset}), eq.playInBuffers(sound.samples, 480)));
}

TEST_F(ProcessModule, InAStreamEffectTheModuleFolds) {
    sound = makeNoiseFor(0x3F, 1000);
    writeSound(path("in.wav"), sound);
    const Recording recording;  // it leaves the planes where they are, half as loud
    std::vector<float> expected;
    for (std::size_t frame = 0; frame < sound.frames(); ++frame) {
        expected.push_back(sound.samples[frame * 6] * 0.5f);
        expected.push_back(sound.samples[frame * 6 + 1] * 0.5f);
    }
    EXPECT_TRUE(sameBits(played({"--effect", "sfx", "--output-layout", "stereo", "--preset", equaliserPreset,
                                 "--module-dir", recorderFolder()}),
                         expected));
    EXPECT_EQ(callsOf("Create", recording.calls()).size(), 1U);
}

TEST_F(ProcessModule, AModuleThatRefusesTheFormatIsAnError) {
    for (const char* const answer : {"inputFormat=2", "outputFormat=2", "outputFormat=1"}) {
        const Recording recording(answer);
        EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--module-dir", recorderFolder()},
                              {"the module refuses these formats"}))
            << answer;
    }
}

TEST_F(ProcessModule, TheEqualiserRefusesToFold) {
    EXPECT_TRUE(isRefused({"--effect", "sfx", "--output-layout", "mono", "--preset", equaliserPreset},
                          {"the module refuses these formats"}));
}

TEST_F(ProcessModule, AModuleThatIsMissingIsNamed) {
    std::filesystem::create_directory(path("empty"));
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--module-dir", path("empty")},
                          {"there is no module", path("empty/PELLUX64.so"), "--module-dir"}));
}

TEST_F(ProcessModule, AModuleThatDoesNotWorkIsNamed) {
    std::filesystem::create_directory(path("broken"));
    writeBytes(path("broken/PELLUX64.so"), "no library");
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--module-dir", path("broken")},
                          {path("broken/PELLUX64.so"), "can't be loaded", "korva module check"}));
    const Recording recording("create=null");
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--module-dir", recorderFolder()},
                          {"PELLUX64.so", "makes no instance"}));
}

TEST_F(ProcessModule, AFolderOfModulesThatIsNoneIsRefused) {
    for (const std::string& name : {path("nowhere"), path("in.wav"), std::string()}) {
        EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--module-dir", name},
                              {"--module-dir takes a folder, not '" + name + "'"}));
    }
}

TEST_F(ProcessModule, AFolderMayBeNamedFromWhereTheUserIs) {
    const Recording recording;
    static_cast<void>(recorderFolder());
    Launch launch = playLaunch({"--preset", equaliserPreset, "--module-dir",
                                std::filesystem::relative(path("modules")).string(), "--quiet"});
    EXPECT_TRUE(succeededQuietly(run(launch)));
}

TEST_F(ProcessModule, APresetThatIsMissingOrWrongIsNamed) {
    EXPECT_TRUE(isRefused({"--preset", path("none.json")}, {"none.json", "No such file"}));
    EXPECT_TRUE(isRefused({"--preset", file("{")}, {"preset.json:1:2: syntax error"}));
    EXPECT_TRUE(
        isRefused({"--preset", file(presetJson(thirdEngine, R"({"module": 0, "id": 3, "floats": [1]})"))},
                  {"parameters[0].floats: expected 12 values, got 1"}));
    EXPECT_TRUE(isRefused({"--preset", ""}, {"--preset takes a file, not ''"}));
}

TEST_F(ProcessModule, AnEndpointThatIsUnknownIsNamed) {
    for (const char* const id : {"{0.0.0.00000000}.{00000000-0000-0000-0000-000000000001}", "speakers"}) {
        EXPECT_TRUE(isRefused({"--endpoint", id}, {"there is no endpoint", id, "korva endpoint list"}));
    }
    EXPECT_TRUE(isRefused({"--endpoint", ""}, {"--endpoint takes an endpoint's identifier, not ''"}));
}

TEST_F(ProcessModule, AnEndpointAndAPresetAreNotForOneRun) {
    EXPECT_TRUE(
        isRefused({"--endpoint", addEndpoint(), "--preset", equaliserPreset}, {"--endpoint", "--preset"}));
}

TEST_F(ProcessModule, AModuleFolderNeedsAnEndpoint) {
    EXPECT_TRUE(isRefused({}, {"--module-dir", "need an endpoint"}));
}

TEST_F(ProcessModule, AnEndpointIsPlayedWithThePresetOfTheEffect) {
    const std::string id = addEndpoint();
    installAt(id, equaliserPreset, "mfx");
    installAt(id, voicePreset, "efx");
    EXPECT_TRUE(
        sameBits(played({"--endpoint", id}), alone(equaliserPreset).playInBuffers(sound.samples, 480)));
    EXPECT_TRUE(sameBits(played({"--endpoint", id, "--effect", "efx"}),
                         alone(voicePreset).playInBuffers(sound.samples, 480)));
}

TEST_F(ProcessModule, AnEndpointStaysAsItIs) {
    const std::string id = addEndpoint({"--volume", "0.25"});
    installAt(id, equaliserPreset);
    const std::string sets = exportedSets(id);
    const std::string shown = endpoint({"show", id, "--json"}).output;
    static_cast<void>(played({"--endpoint", id, "--volume", "0.1=0.5"}));
    EXPECT_EQ(exportedSets(id), sets);
    EXPECT_EQ(endpoint({"show", id, "--json"}).output, shown);
    EXPECT_EQ(endpointCount(), 1U);
}

TEST_F(ProcessModule, AnEndpointWithoutAPresetPassesTheSound) {
    const std::string id = addEndpoint();
    installAt(id, equaliserPreset, "efx");
    const Json json = report({"--endpoint", id});
    EXPECT_TRUE(json["engine"].is_null());
    EXPECT_EQ(json["endpoint"], id);
    EXPECT_TRUE(sameBits(readSound(resultPath()).samples, sound.samples));
    const std::string text = play({"--endpoint", id}).output;
    EXPECT_NE(text.find("\nEngine         none: the endpoint has no preset for this effect\n"),
              std::string::npos);
    EXPECT_EQ(text.find("\nModule"), std::string::npos);
}

TEST_F(ProcessModule, AnEngineWithoutAModulePassesTheSound) {
    const std::string none = file(presetJson(secondEngine, ""));
    EXPECT_TRUE(sameBits(played({"--preset", none}), sound.samples));
    EXPECT_NE(play({"--preset", none}).output.find("none: this engine has none"), std::string::npos);
}

TEST_F(ProcessModule, JsonTellsWhatPlayed) {
    const Json json = report({"--preset", equaliserPreset});
    EXPECT_EQ(json["engine"]["engine"], thirdEngine);
    EXPECT_EQ(json["engine"]["module"], module);
    EXPECT_EQ(json["engine"]["loaded"], true);
    EXPECT_EQ(json["engine"]["hardware"], false);
    EXPECT_EQ(json["moduleFolder"], KORVA_EXAMPLE_MODULES);
    EXPECT_TRUE(json["endpoint"].get<std::string>().starts_with("{0.0.0.00000000}.{"));
    EXPECT_EQ(json["changes"], Json::array());
}

TEST_F(ProcessModule, TextTellsWhatPlayed) {
    const std::string text = play({"--preset", equaliserPreset}).output;
    EXPECT_NE(text.find(std::string("\nEngine         ") + thirdEngine + "\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nModule         PELLUX64 in " KORVA_EXAMPLE_MODULES "\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find("\nLibrary        " KORVA_LIBRARY "\n"), std::string::npos) << text;
}

TEST_F(ProcessModule, WithoutAnEndpointNothingIsSaidOfOne) {
    const Outcome outcome = runTool({"process", path("in.wav"), resultPath(), "--json"});
    const Json json = Json::parse(outcome.output);
    EXPECT_TRUE(json["endpoint"].is_null());
    EXPECT_TRUE(json["engine"].is_null());
    EXPECT_TRUE(json["moduleFolder"].is_null());
}

TEST_F(ProcessModule, WithoutAnEndpointNothingIsPutIntoTheRegistry) {
    Launch launch = tool({"process", path("in.wav"), resultPath(), "--quiet"});
    launch.environment["KORVA_REGISTRY"] = registryPath();
    EXPECT_TRUE(succeededQuietly(run(launch)));
    Launch list = tool({"registry", "list", "HKLM"});
    list.environment["KORVA_REGISTRY"] = registryPath();
    EXPECT_EQ(run(list).output, "HKEY_LOCAL_MACHINE\n");
}

TEST_F(ProcessModule, TheEndpointsVolumeReachesTheModule) {
    const std::string id = addEndpoint({"--volume", "0.1"});
    installAt(id, equaliserPreset);
    const Recording recording;
    static_cast<void>(played({"--endpoint", id, "--module-dir", recorderFolder()}));
    EXPECT_EQ(sent(recording, 4, 24), (Values{bytesOf(-20.0f)}));
}

TEST_F(ProcessModule, AVolumeReachesTheModuleBetweenTheBuffers) {
    const Recording recording;
    const Json json = report({"--preset", equaliserPreset, "--module-dir", recorderFolder(), "--volume",
                              "0.1=0.1", "--volume", "0.2=0"});
    EXPECT_EQ(sent(recording, 4, 24), (Values{bytesOf(0.0f), bytesOf(-20.0f), bytesOf(-130.0f)}));
    EXPECT_EQ(json["changes"].size(), 2U);
    EXPECT_EQ(json["changes"][0]["seconds"], 0.1);
    EXPECT_FLOAT_EQ(json["changes"][0]["volume"].get<float>(), 0.1f);
    std::size_t buffers = 0;  // before the first change, which is the second of the volume's
    std::size_t volumes = 0;
    for (const RecordedCall& call : recording.calls()) {
        if (call.function == "process" && volumes < 2) {
            ++buffers;
        } else if (call.function == "SetParameter" && call.number("bank") == 4 && call.number("id") == 24) {
            ++volumes;
        }
    }
    EXPECT_EQ(buffers, 10U);
}

TEST_F(ProcessModule, ATemporaryEndpointIsThereWhileItPlaysAndGoneAfter) {
    writeBytes(path("hold"), "");
    const Recording recording("hold:Initialize=" + path("hold"));
    const std::string modules = recorderFolder();
    ChildProcess child(playLaunch({"--preset", equaliserPreset, "--module-dir", modules, "--quiet"}));
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(path("hold.reached")); }));
    const Json listed = Json::parse(endpoint({"list", "--json"}).output);
    std::filesystem::remove(path("hold"));
    EXPECT_TRUE(succeededQuietly(child.wait()));
    ASSERT_EQ(listed.size(), 1U);
    EXPECT_EQ(listed[0]["name"], "korva process");
    EXPECT_EQ(endpointCount(), 0U);
    EXPECT_EQ(
        registry({"list", "HKLM\\Software\\Veltrane\\APO\\" + listed[0]["id"].get<std::string>()}).exitCode,
        2);
}

TEST_F(ProcessModule, AnInterruptionInTheMiddleLeavesNeitherFileNorEndpoint) {
    writeLongSound(path("long.wav"), 900'000'000);
    Launch launch = playLaunch({"--preset", equaliserPreset, "--buffer", "1"});
    launch.arguments[1] = path("long.wav");
    FolderWatch watch(path("result"));
    ChildProcess child(launch);
    EXPECT_TRUE(watch.waitForName().starts_with(".korva-"));
    EXPECT_EQ(endpointCount(), 1U);
    child.send(SIGINT);
    const Outcome outcome = child.wait();
    EXPECT_EQ(outcome.exitCode, 128 + SIGINT);
    EXPECT_EQ(outcome.error, "korva: error: interrupted\n");
    EXPECT_TRUE(namesIn(path("result")).empty());
    EXPECT_EQ(endpointCount(), 0U);
}

}  // namespace
}  // namespace korva::test
