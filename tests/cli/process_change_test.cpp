#include <algorithm>
#include <span>

#include "korva/preset/preset_file.h"
#include "tests/cli/module_tool_test.h"
#include "tests/support/recorded_calls.h"

namespace korva::test {
namespace {

class ProcessChange : public ModuleToolTest {
protected:
    /// A change to the other preset at a time of the sound.
    [[nodiscard]] std::string changeAt(const std::string& seconds) const {
        return seconds + "=" + voicePreset;
    }

    /// The equaliser alone, whose preset changes when `frame` frames have been played, which is at a buffer's
    /// begin.
    [[nodiscard]] std::vector<float> changedAlone(std::size_t frame, std::size_t bufferFrames) const {
        ModuleAlone eq = alone(equaliserPreset);
        const std::span<const float> samples(sound.samples);
        std::vector<float> result = eq.playInBuffers(samples.first(frame * 2), bufferFrames);
        eq.change(tool::presetOfFile(voicePreset));
        std::ranges::copy(eq.playInBuffers(samples.subspan(frame * 2), bufferFrames),
                          std::back_inserter(result));
        return result;
    }

    [[nodiscard]] std::string shorterPreset(const std::string& name, const std::string& engine,
                                            const char* hardware) const {
        return file("{\"engine\": \"" + engine + "\", \"presetVersion\": 1, \"hardware\": " + hardware +
                        ", \"parameters\": []}",
                    name);
    }
};

TEST_F(ProcessChange, TheOutputIsWhatTheModuleGivesThatIsChangedBetweenTheseBuffers) {
    EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--change", changeAt("0.2")}),
                         changedAlone(9600, 480)));
    EXPECT_TRUE(
        sameBits(played({"--preset", equaliserPreset, "--change", changeAt("0.25"), "--buffer", "1000"}),
                 changedAlone(12'000, 1000)));
}

TEST_F(ProcessChange, IsHeard) {
    const std::vector<float> changed = played({"--preset", equaliserPreset, "--change", changeAt("0.2")});
    const std::vector<float> unchanged = played({"--preset", equaliserPreset});
    const auto [first, other] = std::ranges::mismatch(changed, unchanged);
    EXPECT_GE(first - changed.begin(), 9600 * 2);
    EXPECT_LT(first - changed.begin(), (9600 + 480) * 2);
}

TEST_F(ProcessChange, WaitsForTheNextBufferThatBegins) {
    for (const char* const seconds : {"0.2001", "0.205", "0.21"}) {
        EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--change", changeAt(seconds)}),
                             changedAlone(10'080, 480)))
            << seconds;
    }
}

TEST_F(ProcessChange, AtTheBeginComesBeforeTheFirstBuffer) {
    EXPECT_TRUE(
        sameBits(played({"--preset", equaliserPreset, "--change", changeAt("0")}), changedAlone(0, 480)));
}

TEST_F(ProcessChange, BeforeTheLastBufferIsMade) {
    EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--change", changeAt("0.41")}),
                         changedAlone(19'680, 480)));
}

TEST_F(ProcessChange, TheResultDoesNotDependOnTime) {
    const std::vector<std::string> options = {"--preset",      equaliserPreset, "--change",
                                              changeAt("0.1"), "--change",      "0.3=" + equaliserPreset};
    const std::vector<float> once = played(options);
    for (int again = 0; again < 3; ++again) {
        EXPECT_TRUE(sameBits(played(options), once));
    }
}

TEST_F(ProcessChange, SeveralAreMadeInTheOrderOfTheirTimes) {
    const std::vector<float> inOrder = played(
        {"--preset", equaliserPreset, "--change", changeAt("0.1"), "--change", "0.3=" + equaliserPreset});
    EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--change", "0.3=" + equaliserPreset,
                                 "--change", changeAt("0.1")}),
                         inOrder));
    EXPECT_FALSE(sameBits(inOrder, played({"--preset", equaliserPreset, "--change", changeAt("0.1")})));
}

TEST_F(ProcessChange, AnEndpointKeepsThePresetThatItWasChangedTo) {
    const std::string id = addEndpoint();
    installAt(id, equaliserPreset, "mfx");
    installAt(id, equaliserPreset, "efx");
    const auto dumped = [&](const char* effect) {
        return preset({"dump", "--endpoint", id, "--effect", effect}).output;
    };
    const std::string before = dumped("mfx");
    EXPECT_TRUE(sameBits(played({"--endpoint", id, "--change", changeAt("0.2")}), changedAlone(9600, 480)));
    EXPECT_NE(dumped("mfx"), before);
    EXPECT_EQ(dumped("efx"), before);
    installAt(id, voicePreset, "efx");
    EXPECT_EQ(dumped("mfx"), dumped("efx"));
}

TEST_F(ProcessChange, OfAnEndpointWithoutAPresetBringsTheEngine) {
    const Json json = report({"--endpoint", addEndpoint(), "--change", changeAt("0.2")});
    const std::span<const float> samples(sound.samples);
    std::vector<float> expected(samples.begin(), samples.begin() + 9600 * 2);
    std::ranges::copy(alone(voicePreset).playInBuffers(samples.subspan(9600 * 2), 480),
                      std::back_inserter(expected));
    EXPECT_TRUE(sameBits(readSound(resultPath()).samples, expected));
    EXPECT_EQ(json["engine"]["module"], "PELLUX64");
    EXPECT_EQ(json["engine"]["loaded"], true);
}

TEST_F(ProcessChange, ThatBringsAnEngineWhoseModuleIsMissingIsRefused) {
    std::filesystem::create_directory(path("empty"));
    EXPECT_TRUE(
        isRefused({"--endpoint", addEndpoint(), "--change", changeAt("0.2"), "--module-dir", path("empty")},
                  {"there is no module", "PELLUX64.so"}));
}

TEST_F(ProcessChange, ThatBringsAnEngineWhoseModuleMakesNoInstanceIsRefused) {
    const Recording recording("create=null");
    EXPECT_TRUE(isRefused(
        {"--endpoint", addEndpoint(), "--change", changeAt("0.2"), "--module-dir", recorderFolder()},
        {"PELLUX64.so", "makes no instance"}));
}

TEST_F(ProcessChange, SendsOnlyWhatChanges) {
    const Recording recording;
    static_cast<void>(
        played({"--preset", equaliserPreset, "--change", changeAt("0.2"), "--module-dir", recorderFolder()}));
    std::vector<std::int64_t> changed;
    std::size_t buffers = 0;
    for (const RecordedCall& call : recording.calls()) {
        if (call.function == "process") {
            ++buffers;
        } else if (call.function == "SetParameter" && buffers > 0) {
            EXPECT_EQ(buffers, 20U);
            EXPECT_EQ(call.number("bank"), 0);
            changed.push_back(call.number("id"));
        }
    }
    EXPECT_EQ(changed, (std::vector<std::int64_t>{3, 4}));
    EXPECT_EQ(callsOf("Create", recording.calls()).size(), 1U);
    EXPECT_EQ(callsOf("Initialize", recording.calls()).size(), 1U);
}

TEST_F(ProcessChange, TheReportTellsWhenAndHowSoon) {
    const std::vector<std::string> options = {"--preset", equaliserPreset, "--change", changeAt("0.2001")};
    const Json json = report(options);
    ASSERT_EQ(json["changes"].size(), 1U);
    EXPECT_EQ(json["changes"][0]["seconds"], 0.21);
    EXPECT_EQ(json["changes"][0]["preset"], voicePreset);
    for (const char* const time : {"installMs", "settleMs"}) {
        EXPECT_GT(json["changes"][0][time], 0.0);
        EXPECT_LT(json["changes"][0][time], 10'000.0);
    }
    EXPECT_FALSE(json["changes"][0].contains("volume"));
    const std::string text = play(options).output;
    const std::size_t line = text.find("\nChange         at 0.210 s: " + voicePreset + ", installed in ");
    ASSERT_NE(line, std::string::npos) << text;
    EXPECT_TRUE(text.substr(0, text.find('\n', line + 1)).ends_with(" ms to settle"));
}

TEST_F(ProcessChange, TheReportTellsOfVolumes) {
    const std::string text = play({"--preset", equaliserPreset, "--volume", "0.2=0.25"}).output;
    EXPECT_NE(text.find("\nChange         at 0.200 s: volume 0.25\n"), std::string::npos) << text;
}

TEST_F(ProcessChange, ForAnotherEngineIsRefused) {
    const std::string other = shorterPreset("other.json", firstEngine, "false");
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change", "0.2=" + other},
                          {other, "for the engine", firstEngine, thirdEngine}));
    EXPECT_TRUE(
        isRefused({"--endpoint", addEndpoint(), "--change", changeAt("0.1"), "--change", "0.2=" + other},
                  {other, firstEngine, thirdEngine}));
}

TEST_F(ProcessChange, ToOrFromHardwareIsRefused) {
    const std::string hard = shorterPreset("hard.json", thirdEngine, "true");
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change", "0.2=" + hard}, {hard, "hardware"}));
    EXPECT_TRUE(isRefused({"--preset", hard, "--change", changeAt("0.2")}, {voicePreset, "hardware"}));
}

TEST_F(ProcessChange, ThatNoBufferCouldHearIsRefused) {
    EXPECT_TRUE(
        isRefused({"--preset", equaliserPreset, "--change", changeAt("0.4101")}, {"too late", "0.4101"}));
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--volume", "0.42=1"}, {"too late"}));
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change", changeAt("1e9")}, {"too late"}));
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change", changeAt("0.01"), "--buffer", "1000000"},
                          {"too late"}));
}

TEST_F(ProcessChange, ThatAnInputOfUnknownLengthDoesNotReachIsRefused) {
    std::string bytes = readBytes(path("in.wav"));
    for (const std::size_t place : {std::size_t{4}, bytes.find("data") + 4}) {
        bytes.replace(place, 4, 4, '\xFF');  // as a program writes that doesn't know the length yet
    }
    writeBytes(path("in.wav"), bytes);
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change", changeAt("0.42")}, {"too late"}));
    EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--change", changeAt("0.41")}),
                         changedAlone(19'680, 480)));
}

TEST_F(ProcessChange, ThatIsNoneIsRefused) {
    for (const char* const seconds : {"-1", "nan", "inf", "1e10", "", "soon", "0x1", "1s", "+1", " 1"}) {
        EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change=" + changeAt(seconds)},
                              {"--change takes SECONDS=FILE", seconds}))
            << seconds;
        EXPECT_TRUE(isRefused({"--preset", equaliserPreset, std::string("--volume=") + seconds + "=1"},
                              {"--volume takes SECONDS=SCALAR", seconds}))
            << seconds;
    }
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change", voicePreset}, {"SECONDS=FILE"}));
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change", "0.1=" + path("none.json")},
                          {"none.json", "No such file"}));
    EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--change", "0.1=" + file("{")},
                          {"preset.json:1:2: syntax error"}));
}

TEST_F(ProcessChange, OfTheVolumeTakesAScalarOnly) {
    for (const char* const scalar : {"1.5", "-0.1", "nan", "loud", "", "50%"}) {
        EXPECT_TRUE(isRefused({"--preset", equaliserPreset, "--volume", std::string("0.1=") + scalar},
                              {"--volume takes SECONDS=SCALAR", "from 0 to 1", scalar}))
            << scalar;
    }
}

TEST_F(ProcessChange, NeedsAnEndpoint) {
    const auto withoutEndpoint = [&](const char* option, const std::string& value) {
        return runTool({"process", path("in.wav"), resultPath(), option, value});
    };
    EXPECT_TRUE(failedWith(withoutEndpoint("--change", changeAt("0.1")), {"need an endpoint", "--preset"}));
    EXPECT_TRUE(failedWith(withoutEndpoint("--volume", "0.1=1"), {"need an endpoint", "--endpoint"}));
    EXPECT_TRUE(namesIn(path("result")).empty());
}

}  // namespace
}  // namespace korva::test
