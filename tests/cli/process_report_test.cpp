#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "rt/kernels/kernels.h"
#include "tests/cli/process_support.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;

class ProcessReport : public ToolTest {
protected:
    ProcessReport() {
        Sound sound = makeNoiseFor(0x63F, 1000);
        sound.samples[0] = 0.75f;  // front left's highest level
        writeSound(path("in.wav"), sound);
    }

    /// The tool's JSON for the surround sound made stereo.
    [[nodiscard]] Json report(const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments = {"process",         path("in.wav"), path("out.wav"),
                                              "--output-layout", "stereo",       "--json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.error, "");
        return Json::parse(outcome.output);
    }
};

TEST_F(ProcessReport, JsonTellsBothFormats) {
    const Json json = report();
    EXPECT_EQ(json["input"]["file"], path("in.wav"));
    EXPECT_EQ(json["input"]["channels"], 8);
    EXPECT_EQ(json["input"]["sampleRate"], 48000);
    EXPECT_EQ(json["input"]["channelMask"], 0x63F);
    EXPECT_EQ(json["input"]["layout"], "7.1");
    EXPECT_EQ(json["output"]["file"], path("out.wav"));
    EXPECT_EQ(json["output"]["kind"], "WAV, 32-bit float");
    EXPECT_EQ(json["output"]["channels"], 2);
    EXPECT_EQ(json["output"]["sampleRate"], 48000);
    EXPECT_EQ(json["output"]["channelMask"], 0x3);
    EXPECT_EQ(json["output"]["layout"], "stereo");
}

TEST_F(ProcessReport, JsonTellsTheWork) {
    const Json json = report({"--effect", "sfx"});
    EXPECT_EQ(json["effect"], "sfx");
    EXPECT_EQ(json["frames"], 1000);
    EXPECT_EQ(json["buffers"], 3);
    EXPECT_EQ(json["bufferFrames"], 480);
    EXPECT_EQ(json["library"], KORVA_LIBRARY);
    EXPECT_TRUE(json["peaks"].is_null());
}

TEST_F(ProcessReport, JsonTellsDurationsThatFitTogether) {
    const Json json = report({"--buffer", "10"});
    const Json& ns = json["bufferNs"];
    EXPECT_EQ(json["buffers"], 100);
    EXPECT_GT(ns["median"], 0);
    EXPECT_LE(ns["median"], ns["percentile99"]);
    EXPECT_LE(ns["percentile99"], ns["maximum"]);
    EXPECT_LE(ns["maximum"], ns["total"]);
    const double seconds = ns["total"].get<double>() / 1e9;
    EXPECT_NEAR(json["realTimeFactor"].get<double>() * seconds, 1000.0 / 48000.0, 1e-6);
}

TEST_F(ProcessReport, TellsTheKernelsInUse) {
    for (const rt::Kernels* const kernels : rt::supportedKernels()) {
        Launch launch = tool({"process", path("in.wav"), path("out.wav"), "--json"});
        launch.environment["KORVA_KERNELS"] = std::string(kernels->name);
        EXPECT_EQ(Json::parse(run(launch).output)["kernels"], std::string(kernels->name));
    }
}

TEST_F(ProcessReport, ALayoutWithoutANameIsNull) {
    const Outcome outcome =
        runTool({"process", path("in.wav"), path("out.wav"), "--output-layout", "0x107", "--json"});
    const Json json = Json::parse(outcome.output);
    EXPECT_TRUE(json["output"]["layout"].is_null());
    EXPECT_EQ(json["output"]["channelMask"], 0x107);
}

TEST_F(ProcessReport, MetersTellTheHighestLevelOfEachSpeaker) {
    const Json peaks = report({"--meters", "--buffer", "1"})["peaks"];
    ASSERT_EQ(peaks["input"].size(), 8u);
    ASSERT_EQ(peaks["output"].size(), 2u);
    const std::vector<std::string> speakers = {"front left", "front right", "front center", "low frequency",
                                               "back left",  "back right",  "side left",    "side right"};
    const Sound in = readSound(path("in.wav"));
    const Sound out = readSound(path("out.wav"));
    const auto highest = [](const Sound& sound, std::size_t channel) {
        float level = 0;
        for (std::size_t at = channel; at < sound.samples.size();
             at += static_cast<std::size_t>(sound.channels)) {
            level = std::max(level, std::fabs(sound.samples[at]));
        }
        return level;
    };
    for (std::size_t plane = 0; plane < 8; ++plane) {
        const Json& peak = peaks["input"][plane];
        EXPECT_EQ(peak["speaker"], speakers[plane]);
        EXPECT_EQ(peak["level"].get<float>(), highest(in, plane)) << speakers[plane];
    }
    EXPECT_NEAR(peaks["input"][0]["dBFS"].get<double>(), 20 * std::log10(0.75), 1e-6);
    EXPECT_EQ(peaks["output"][0]["level"].get<float>(), highest(out, 0));
    EXPECT_EQ(peaks["output"][1]["level"].get<float>(), highest(out, 1));
}

TEST_F(ProcessReport, MetersPassOverWhatIsNoNumber) {
    constexpr float none = std::numeric_limits<float>::quiet_NaN();
    constexpr float most = std::numeric_limits<float>::infinity();
    writeSound(path("in.wav"), Sound{.channels = 2, .samples = {none, most, -0.5F, none, none, -most}});
    const Outcome outcome = runTool({"process", path("in.wav"), path("out.wav"), "--meters", "--json"});
    const Json peaks = Json::parse(outcome.output)["peaks"];
    for (const char* const side : {"input", "output"}) {
        EXPECT_EQ(peaks[side][0]["level"], 0.5);
        EXPECT_TRUE(peaks[side][1]["level"].is_null());
    }
}

TEST_F(ProcessReport, MetersOfSilenceHaveNoDecibels) {
    writeSound(path("in.wav"), Sound{.channels = 1, .samples = std::vector<float>(100)});
    const Outcome outcome = runTool({"process", path("in.wav"), path("out.wav"), "--meters", "--json"});
    const Json peaks = Json::parse(outcome.output)["peaks"];
    EXPECT_EQ(peaks["input"][0]["level"], 0.0);
    EXPECT_TRUE(peaks["input"][0]["dBFS"].is_null());
}

TEST_F(ProcessReport, JsonHoldsForAFileNameThatIsNoText) {
    const std::string name = path("\xFF\xFE.wav");
    std::filesystem::rename(path("in.wav"), name);
    const Outcome outcome = runTool({"process", name, path("out.wav"), "--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_FALSE(Json::parse(outcome.output, nullptr, false).is_discarded());
}

TEST_F(ProcessReport, TextTellsTheSame) {
    const Outcome outcome =
        runTool({"process", path("in.wav"), path("out.wav"), "--output-layout", "stereo", "--meters"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    for (const char* const part :
         {"in.wav", "8 channels, 48000 Hz, 7.1 (0x63F)", "out.wav", "2 channels, 48000 Hz, stereo (0x3)",
          "sfx", "1000 frames", "3 of 480 frames, the last one of 40", "Library", "Kernels", "median", "99 %",
          "maximum", "times real time", "front left", "side right", "dBFS"}) {
        EXPECT_NE(outcome.output.find(part), std::string::npos) << part << " in\n" << outcome.output;
    }
}

TEST_F(ProcessReport, QuietPrintsNothing) {
    EXPECT_TRUE(
        succeededQuietly(runTool({"process", path("in.wav"), path("out.wav"), "--quiet", "--meters"})));
}

TEST_F(ProcessReport, ThatCannotBePrintedIsAnErrorAndTheOutputStays) {
    for (const char* const option : {"--meters", "--json"}) {
        Launch launch = tool({"process", path("in.wav"), path("out.wav"), option});
        launch.outputPath = "/dev/full";
        EXPECT_TRUE(failedWith(run(launch), {"standard output", "No space left"})) << option;
        EXPECT_EQ(readSound(path("out.wav")).frames(), 1000u);
        std::filesystem::remove(path("out.wav"));
    }
}

TEST_F(ProcessReport, WithoutStandardOutputIsAnErrorAndTheOutputStays) {
    for (const std::vector<int>& closed : {std::vector{1}, std::vector{0, 1}}) {
        Launch launch = tool({"process", path("in.wav"), path("out.wav")});
        launch.closedStreams = closed;
        EXPECT_TRUE(failedWith(run(launch), {"standard output"}));
        // Nothing of the report is in the file, though it could have got standard output's number.
        EXPECT_EQ(readBytes(path("out.wav")).find("Kernels"), std::string::npos);
        EXPECT_EQ(readSound(path("out.wav")).frames(), 1000u);
        std::filesystem::remove(path("out.wav"));
    }
}

TEST_F(ProcessReport, QuietNeedsNoStandardStreams) {
    Launch launch = tool({"process", path("in.wav"), path("out.wav"), "--quiet"});
    launch.closedStreams = {0, 1, 2};
    EXPECT_EQ(run(launch).exitCode, 0);
    const Sound out = readSound(path("out.wav"));
    EXPECT_TRUE(sameBits(out.samples, readSound(path("in.wav")).samples));
}

TEST_F(ProcessReport, APipeGetsNoProgressBar) {
    const Outcome outcome = runTool({"process", path("in.wav"), path("out.wav"), "--buffer", "1"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
}

}  // namespace
}  // namespace korva::test
