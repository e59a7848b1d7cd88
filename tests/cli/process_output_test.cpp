#include <sys/stat.h>

#include <array>
#include <fstream>
#include <limits>
#include <ostream>

#include "tests/cli/process_support.h"

namespace korva::test {
namespace {

mode_t permissionsOf(const std::string& path) {
    struct stat status {};
    stat(path.c_str(), &status);
    return status.st_mode & 07777;
}

class ProcessOutput : public ToolTest {
protected:
    ProcessOutput() { writeSound(path("in.wav"), in); }

    [[nodiscard]] Outcome processTo(const std::string& output) const {
        return process(path("in.wav"), output);
    }

    /// The tool as someone whom permissions bind.
    [[nodiscard]] Outcome processBoundTo(const std::string& output) const {
        Launch launch = tool({"process", path("in.wav"), output});
        launch.obeysPermissions = true;
        return run(launch);
    }

    const Sound in = makeNoise(2, 2000);
};

struct Ending {
    std::string ending;
    int format;
    float tolerance;  ///< 0: to the bit. Below 0: the encoder changes the samples.

    friend std::ostream& operator<<(std::ostream& out, const Ending& kind) {
        return out << "'" << kind.ending << "'";
    }
};

class ProcessEnding : public ProcessOutput, public testing::WithParamInterface<Ending> {};

TEST_P(ProcessEnding, SaysTheKindOfFile) {
    const Ending& kind = GetParam();
    ASSERT_TRUE(succeededQuietly(processTo(path("out" + kind.ending))));
    const Sound out = readSound(path("out" + kind.ending));
    EXPECT_EQ(out.format, kind.format);
    EXPECT_EQ(out.sampleRate, in.sampleRate);
    EXPECT_EQ(out.channels, in.channels);
    ASSERT_EQ(out.frames(), in.frames());
    for (std::size_t i = 0; kind.tolerance >= 0 && i < in.samples.size(); ++i) {
        ASSERT_NEAR(out.samples[i], in.samples[i], kind.tolerance) << i;
    }
}

INSTANTIATE_TEST_SUITE_P(All, ProcessEnding,
                         testing::Values(Ending{".wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 0},
                                         Ending{".WAV", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 0},
                                         Ending{"", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 0},
                                         Ending{".w64", SF_FORMAT_W64 | SF_FORMAT_FLOAT, 0},
                                         Ending{".rf64", SF_FORMAT_RF64 | SF_FORMAT_FLOAT, 0},
                                         Ending{".aif", SF_FORMAT_AIFF | SF_FORMAT_FLOAT, 0},
                                         Ending{".aiff", SF_FORMAT_AIFF | SF_FORMAT_FLOAT, 0},
                                         Ending{".au", SF_FORMAT_AU | SF_FORMAT_FLOAT, 0},
                                         Ending{".snd", SF_FORMAT_AU | SF_FORMAT_FLOAT, 0},
                                         Ending{".caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT, 0},
                                         Ending{".flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 1.0f / 8388608},
                                         Ending{".ogg", SF_FORMAT_OGG | SF_FORMAT_VORBIS, -1},
                                         Ending{".oga", SF_FORMAT_OGG | SF_FORMAT_VORBIS, -1},
                                         Ending{".opus", SF_FORMAT_OGG | SF_FORMAT_OPUS, -1},
                                         Ending{".mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III, -1}),
                         [](const auto& kind) {
                             const std::string& ending = kind.param.ending;
                             return ending.empty() ? "none" : ending.substr(1);
                         });

TEST_F(ProcessOutput, AnUnknownEndingIsRefusedWithThoseThereAre) {
    EXPECT_TRUE(failedWith(processTo(path("out.txt")), {"out.txt", "'.txt'", ".wav", ".flac", ".mp3"}));
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(ProcessOutput, AKindThatCannotTakeTheFormatIsRefused) {
    writeSound(path("six.wav"), makeNoise(6, 100));
    Sound cd = makeNoise(2, 100);
    cd.sampleRate = 44100;
    writeSound(path("cd.wav"), cd);
    EXPECT_TRUE(failedWith(process(path("six.wav"), path("out.mp3")), {"out.mp3", "6 channels", ".wav"}));
    EXPECT_TRUE(failedWith(process(path("cd.wav"), path("out.opus")), {"out.opus", "44100 Hz", ".wav"}));
    EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"cd.wav", "in.wav", "six.wav"}));
}

TEST_F(ProcessOutput, AnEncoderThatTakesNothingIsAnError) {
    Sound fast = makeNoise(2, 100);
    fast.sampleRate = 700'000;
    writeSound(path("fast.wav"), fast);
    EXPECT_TRUE(failedWith(process(path("fast.wav"), path("out.ogg")), {"out.ogg", "700000 Hz", ".wav"}));
    EXPECT_FALSE(std::filesystem::exists(path("out.ogg")));
}

TEST_F(ProcessOutput, MoreThanAKindCanHoldIsRefusedBeforeTheWork) {
    writeLongSound(path("long.wav"), 0x40000000);  // 4 GiB as floats
    for (const char* const name : {"out.wav", "out.aif", "out.au"}) {
        Launch launch = tool({"process", path("long.wav"), path(name)});
        launch.fileSizeLimit = 1;  // whoever writes more than a byte gets another error
        EXPECT_TRUE(failedWith(run(launch), {name, "4 GiB", ".w64"})) << name;
    }
    EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"in.wav", "long.wav"}));
}

TEST_F(ProcessOutput, KindsWithoutFloatsStayWithinFullScaleAndTakeNoNumberForSilence) {
    using Limits = std::numeric_limits<float>;
    Sound wild{.channels = 1};
    wild.samples = {
        Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), 3e9f, -2.0f, 1.0f, -1.0f, 0.25f};
    wild.samples.resize(4000, 0.25f);
    writeSound(path("wild.wav"), wild);
    ASSERT_TRUE(succeededQuietly(process(path("wild.wav"), path("out.flac"))));
    const std::vector<float> out = readSound(path("out.flac")).samples;
    const std::array<float, 8> expected = {0.0f, 1.0f, -1.0f, 1.0f, -1.0f, 1.0f, -1.0f, 0.25f};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_NEAR(out[i], expected[i], 1.0f / 4194304) << i;
    }
    for (const char* const name : {"out.ogg", "out.opus", "out.mp3"}) {
        EXPECT_TRUE(succeededQuietly(process(path("wild.wav"), path(name)))) << name;
    }
}

TEST_F(ProcessOutput, Samples24BitsWideSurviveInA24BitFile) {
    Sound exact{.channels = 1};
    for (int step = -8'388'608; step < 8'388'608; step += 4099) {
        exact.samples.push_back(static_cast<float>(step) / 8'388'608.0f);
    }
    writeSound(path("exact.wav"), exact);
    ASSERT_TRUE(succeededQuietly(process(path("exact.wav"), path("out.flac"))));
    EXPECT_TRUE(sameBits(readSound(path("out.flac")).samples, exact.samples));
}

TEST_F(ProcessOutput, KindsThatFixTheirSpeakersGetThemInTheirOrder) {
    writeSound(path("surround.wav"), makeNoiseFor(0x3F, 4000));
    ASSERT_TRUE(succeededQuietly(process(path("surround.wav"), path("out.flac"))));
    ASSERT_TRUE(succeededQuietly(process(path("out.flac"), path("back.wav"))));
    const Sound back = readSound(path("back.wav"));
    EXPECT_EQ(back.positions, positionsOfMask(0x3F));
    const Sound there = readSound(path("surround.wav"));
    for (std::size_t i = 0; i < there.samples.size(); ++i) {
        ASSERT_NEAR(back.samples[i], there.samples[i], 1.0f / 4194304) << i;
    }
}

TEST_F(ProcessOutput, VorbisGetsItsCenterSecond) {
    Sound surround{
        .channels = 6, .format = SF_FORMAT_WAVEX | SF_FORMAT_FLOAT, .positions = positionsOfMask(0x3F)};
    for (int frame = 0; frame < 8000; ++frame) {
        surround.samples.insert(surround.samples.end(), {0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f});
    }
    writeSound(path("surround.wav"), surround);
    ASSERT_TRUE(succeededQuietly(process(path("surround.wav"), path("out.ogg"))));
    const Sound out = readSound(path("out.ogg"));
    const float* const middle = &out.samples[std::size_t{4000} * 6];
    std::size_t channel = 0;
    for (const float level : {0.1f, 0.3f, 0.2f, 0.5f, 0.6f, 0.4f}) {
        EXPECT_NEAR(middle[channel++], level, 0.05f);
    }
}

TEST_F(ProcessOutput, KindsThatKnowTheLayoutKeepItsMask) {
    writeSound(path("surround.wav"), makeNoiseFor(0x3F, 100));
    for (const char* const name : {"out.rf64", "out.caf", "out.aif"}) {
        ASSERT_TRUE(succeededQuietly(process(path("surround.wav"), path(name)))) << name;
        EXPECT_EQ(readSound(path(name)).positions, positionsOfMask(0x3F)) << name;
    }
}

TEST_F(ProcessOutput, TheSameSoundGivesTheSameBytes) {
    ASSERT_TRUE(succeededQuietly(processTo(path("first.wav"))));
    ASSERT_TRUE(succeededQuietly(process(path("first.wav"), path("second.wav"), {"--buffer", "7"})));
    EXPECT_EQ(readBytes(path("first.wav")), readBytes(path("second.wav")));
    EXPECT_EQ(readBytes(path("first.wav")).find("PEAK"), std::string::npos);  // which holds the time of day
}

TEST_F(ProcessOutput, LeavesNothingBesideTheOutput) {
    ASSERT_TRUE(succeededQuietly(processTo(path("out.wav"))));
    EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"in.wav", "out.wav"}));
    EXPECT_TRUE(namesIn(temporaryFolder).empty());
}

TEST_F(ProcessOutput, MayBeTheInput) {
    ASSERT_TRUE(succeededQuietly(process(path("in.wav"), path("in.wav"), {"--output-layout", "mono"})));
    EXPECT_EQ(readSound(path("in.wav")).channels, 1);
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(ProcessOutput, ANewFileHasTheUsualPermissions) {
    const mode_t before = umask(027);
    const Outcome outcome = processTo(path("out.wav"));
    umask(before);
    ASSERT_TRUE(succeededQuietly(outcome));
    EXPECT_EQ(permissionsOf(path("out.wav")), 0640u);
}

TEST_F(ProcessOutput, AnExistingFileKeepsItsPermissions) {
    writeBytes(path("out.wav"), "old");
    chmod(path("out.wav").c_str(), 0604);
    ASSERT_TRUE(succeededQuietly(processTo(path("out.wav"))));
    EXPECT_EQ(permissionsOf(path("out.wav")), 0604u);
    EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, in.samples));
}

TEST_F(ProcessOutput, ALinkStaysAndItsTargetIsReplaced) {
    std::filesystem::create_directory(path("there"));
    writeBytes(path("there/target.wav"), "old");
    std::filesystem::create_symlink("there/target.wav", path("link.wav"));
    ASSERT_TRUE(succeededQuietly(processTo(path("link.wav"))));
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.wav")));
    EXPECT_TRUE(sameBits(readSound(path("there/target.wav")).samples, in.samples));
    EXPECT_EQ(namesIn(path("there")), std::vector<std::string>{"target.wav"});
}

TEST_F(ProcessOutput, ALinkToNothingGetsItsTarget) {
    std::filesystem::create_symlink("target.wav", path("link.wav"));
    ASSERT_TRUE(succeededQuietly(processTo(path("link.wav"))));
    EXPECT_TRUE(std::filesystem::is_symlink(path("link.wav")));
    EXPECT_TRUE(sameBits(readSound(path("target.wav")).samples, in.samples));
}

TEST_F(ProcessOutput, LinksInACircleAreRefused) {
    std::filesystem::create_symlink("b.wav", path("a.wav"));
    std::filesystem::create_symlink("a.wav", path("b.wav"));
    EXPECT_TRUE(failedWith(processTo(path("a.wav")), {"a.wav", "cannot write"}));
}

TEST_F(ProcessOutput, AFolderIsRefused) {
    EXPECT_TRUE(failedWith(processTo(folder.string()), {"it is a folder"}));
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"in.wav"});
}

TEST_F(ProcessOutput, AMissingFolderIsNamed) {
    EXPECT_TRUE(failedWith(processTo(path("missing/out.wav")),
                           {"missing/out.wav", "there is no folder", "create it"}));
}

TEST_F(ProcessOutput, AFileInThePlaceOfTheFolderIsRefused) {
    EXPECT_TRUE(failedWith(processTo(path("in.wav/out.wav")), {"in.wav/out.wav", "Not a directory"}));
}

TEST_F(ProcessOutput, AnEmptyNameIsRefused) {
    EXPECT_TRUE(failedWith(processTo(""), {"empty"}));
}

TEST_F(ProcessOutput, AFolderThatMayNotBeWrittenIsNamed) {
    std::filesystem::create_directory(path("locked"));
    chmod(path("locked").c_str(), 0555);
    EXPECT_TRUE(failedWith(processBoundTo(path("locked/out.wav")), {"locked", "Permission denied"}));
    EXPECT_TRUE(namesIn(path("locked")).empty());
}

TEST_F(ProcessOutput, AReadOnlyFileIsNotReplaced) {
    writeBytes(path("out.wav"), "old");
    chmod(path("out.wav").c_str(), 0444);
    EXPECT_TRUE(failedWith(processBoundTo(path("out.wav")), {"out.wav", "Permission denied"}));
    EXPECT_EQ(readBytes(path("out.wav")), "old");
    EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"in.wav", "out.wav"}));
}

TEST_F(ProcessOutput, AReadOnlyPipeIsRefusedWithoutWaitingForAReader) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0444), 0);
    EXPECT_TRUE(failedWith(processBoundTo(path("pipe")), {"pipe", "Permission denied"}));
}

TEST_F(ProcessOutput, AWriteThatFailsIsAnErrorAndLeavesAnExistingFileUntouched) {
    writeBytes(path("out.wav"), "old");
    for (const std::uint64_t limit : {1u, 100u, 15'000u}) {
        Launch launch = tool({"process", path("in.wav"), path("out.wav")});
        launch.fileSizeLimit = limit;
        EXPECT_TRUE(failedWith(run(launch), {"out.wav", "File too large"})) << limit;
        EXPECT_EQ(readBytes(path("out.wav")), "old");
        EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"in.wav", "out.wav"}));
    }
}

TEST_F(ProcessOutput, AFileThatCannotBeBroughtToTheDiskIsAnErrorAndLeavesAnExistingFileUntouched) {
    writeBytes(path("out.wav"), "old");
    Launch launch = onBrokenDisk(tool({"process", path("in.wav"), path("out.wav")}));
    launch.environment["BROKEN_SYNC"] = "fail";
    EXPECT_TRUE(failedWith(run(launch), {"out.wav", "Input/output error"}));
    EXPECT_EQ(readBytes(path("out.wav")), "old");
    EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"in.wav", "out.wav"}));
}

TEST_F(ProcessOutput, AFullDeviceIsAnError) {
    EXPECT_TRUE(failedWith(processTo("/dev/full"), {"/dev/full", "No space left"}));
    EXPECT_TRUE(namesIn(temporaryFolder).empty());
}

TEST_F(ProcessOutput, ADeviceThatTakesAllIsWritten) {
    EXPECT_TRUE(succeededQuietly(processTo("/dev/null")));
    EXPECT_TRUE(namesIn(temporaryFolder).empty());
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

TEST_F(ProcessOutput, ANamedPipeGetsTheWholeFile) {
    writeSound(path("in.wav"), makeNoise(2, 50'000));  // more than a pipe holds
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    ChildProcess child(tool({"process", path("in.wav"), path("pipe"), "--quiet"}));
    const std::string bytes = readBytes(path("pipe"));
    EXPECT_TRUE(succeededQuietly(child.wait()));
    ASSERT_TRUE(succeededQuietly(processTo(path("out.wav"))));
    EXPECT_EQ(bytes, readBytes(path("out.wav")));
    EXPECT_TRUE(std::filesystem::is_fifo(path("pipe")));
}

TEST_F(ProcessOutput, APipeWhoseReaderGoesAwayIsAnError) {
    writeSound(path("in.wav"), makeNoise(2, 50'000));
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    ChildProcess child(tool({"process", path("in.wav"), path("pipe"), "--quiet"}));
    std::ifstream(path("pipe")).get();
    EXPECT_TRUE(failedWith(child.wait(), {"pipe", "Broken pipe"}));
}

TEST_F(ProcessOutput, StandardOutputGetsTheSoundAndTheReportGoesElsewhere) {
    const Outcome outcome = runTool({"process", path("in.wav"), "/dev/stdout"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.error.find("2000 frames"), std::string::npos);
    writeBytes(path("out.wav"), outcome.output);
    EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, in.samples));
}

TEST_F(ProcessOutput, StandardOutputInAFileGetsTheSound) {
    Launch launch = tool({"process", path("in.wav"), "/dev/stdout", "--quiet"});
    launch.outputPath = path("out.wav");
    ASSERT_TRUE(succeededQuietly(run(launch)));
    EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, in.samples));
    EXPECT_EQ(namesIn(folder), (std::vector<std::string>{"in.wav", "out.wav"}));
}

TEST_F(ProcessOutput, StandardOutputCannotTakeSoundAndJson) {
    EXPECT_TRUE(failedWith(runTool({"process", path("in.wav"), "/dev/stdout", "--json"}), {"--json", "OUT"}));
}

}  // namespace
}  // namespace korva::test
