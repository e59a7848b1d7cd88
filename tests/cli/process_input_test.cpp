#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <ostream>

#include "tests/cli/process_support.h"

namespace korva::test {
namespace {

class ProcessInput : public ToolTest {
protected:
    [[nodiscard]] Outcome processFile(const std::string& name) const {
        return process(path(name), path("out.wav"));
    }

    /// The tool with an input whose reads fail after some bytes.
    [[nodiscard]] Launch withBrokenReads(const std::string& input, std::uint64_t bytes) const {
        Launch launch = onBrokenDisk(tool({"process", input, path("out.wav")}));
        launch.environment["BROKEN_READ_PATH"] = input;
        launch.environment["BROKEN_READ_AFTER"] = std::to_string(bytes);
        return launch;
    }

    /// Whether a file is refused for these reasons and nothing is left of the attempt.
    [[nodiscard]] testing::AssertionResult isRefused(const std::string& name,
                                                     std::vector<std::string> parts) const {
        parts.push_back(name);
        const auto before = namesIn(folder);
        if (auto result = failedWith(processFile(name), parts); !result) {
            return result;
        }
        return namesIn(folder) == before && namesIn(temporaryFolder).empty()
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << "files are left";
    }
};

TEST_F(ProcessInput, AMissingFileIsNamed) {
    EXPECT_TRUE(isRefused("missing.wav", {"cannot read", "No such file"}));
}

TEST_F(ProcessInput, AFolderIsRefused) {
    std::filesystem::create_directory(path("folder.wav"));
    EXPECT_TRUE(isRefused("folder.wav", {"it is a folder"}));
}

TEST_F(ProcessInput, AnEmptyFileIsRefused) {
    writeBytes(path("empty.wav"), "");
    EXPECT_TRUE(isRefused("empty.wav", {"it is empty"}));
}

TEST_F(ProcessInput, AFileThatMayNotBeReadIsRefused) {
    writeSound(path("secret.wav"), makeNoise(1, 10));
    chmod(path("secret.wav").c_str(), 0);
    Launch launch = tool({"process", path("secret.wav"), path("out.wav")});
    launch.obeysPermissions = true;
    EXPECT_TRUE(failedWith(run(launch), {"secret.wav", "Permission denied"}));
}

TEST_F(ProcessInput, AFileWithoutSoundIsRefusedWhateverItsEnding) {
    for (const char* const name : {"text.wav", "text.au", "text.mp3", "text.gsm", "text"}) {
        writeBytes(path(name), "To be, or not to be, that is the question.\n");
        EXPECT_TRUE(isRefused(name, {"as a sound file"})) << name;
    }
}

TEST_F(ProcessInput, MoreThanEightChannelsAreRefused) {
    writeSound(path("nine.wav"), makeNoise(9, 10));
    EXPECT_TRUE(isRefused("nine.wav", {"9 channels", "1 to 8"}));
}

TEST_F(ProcessInput, AFileWithoutFramesIsRefused) {
    writeSound(path("none.wav"), makeNoise(2, 0));
    EXPECT_TRUE(isRefused("none.wav", {"no frames"}));
}

TEST_F(ProcessInput, AReadThatFailsInTheMiddleIsAnErrorAndLeavesNothing) {
    writeSound(path("broken.wav"), makeNoise(2, 100'000));
    EXPECT_TRUE(failedWith(run(withBrokenReads(path("broken.wav"), 400'000)),
                           {"broken.wav", "after frame", "Input/output error"}));
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"broken.wav"});
}

/// A kind of file that libsndfile writes.
struct Kind {
    std::string name;
    int format;

    friend std::ostream& operator<<(std::ostream& out, const Kind& kind) { return out << kind.name; }
};

class ProcessTruncated : public ProcessInput, public testing::WithParamInterface<Kind> {
protected:
    ProcessTruncated() {
        Sound sound = makeNoise(2, 24'000);
        sound.format = GetParam().format;
        writeSound(path("whole"), sound);
        whole = readBytes(path("whole"));
    }
    std::string whole;
};

TEST_P(ProcessTruncated, AFileCutOffAnywhereIsRefused) {
    for (std::size_t part = 1; part < 8; ++part) {
        writeBytes(path("cut"), whole.substr(0, whole.size() * part / 8));
        EXPECT_TRUE(isRefused("cut", {})) << part << " of 8";
    }
}

TEST_P(ProcessTruncated, AFileWithoutItsLastByteIsRefused) {
    if (GetParam().name == "Mp3") {
        whole.resize(whole.size() * 9 / 10);  // its length is known to a few frames only
    }
    writeBytes(path("cut"), whole.substr(0, whole.size() - 1));
    EXPECT_TRUE(isRefused("cut", {"truncated"}));
}

TEST_P(ProcessTruncated, TheWholeFileIsTaken) {
    EXPECT_TRUE(succeededQuietly(process(path("whole"), path("out.wav"))));
    EXPECT_EQ(readSound(path("out.wav")).frames(), readSound(path("whole")).frames());
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, ProcessTruncated,
    testing::Values(
        Kind{"Wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT}, Kind{"Wav16", SF_FORMAT_WAV | SF_FORMAT_PCM_16},
        Kind{"WavExtensible", SF_FORMAT_WAVEX | SF_FORMAT_FLOAT},
        Kind{"Aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16}, Kind{"AiffFloat", SF_FORMAT_AIFF | SF_FORMAT_FLOAT},
        Kind{"Au", SF_FORMAT_AU | SF_FORMAT_FLOAT}, Kind{"W64", SF_FORMAT_W64 | SF_FORMAT_FLOAT},
        Kind{"Rf64", SF_FORMAT_RF64 | SF_FORMAT_FLOAT}, Kind{"Caf", SF_FORMAT_CAF | SF_FORMAT_FLOAT},
        Kind{"Flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_16}, Kind{"Vorbis", SF_FORMAT_OGG | SF_FORMAT_VORBIS},
        Kind{"Opus", SF_FORMAT_OGG | SF_FORMAT_OPUS}, Kind{"Mp3", SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III}),
    [](const auto& kind) { return kind.param.name; });

TEST_F(ProcessInput, ADamagedFileIsRefused) {
    Sound sound = makeNoise(2, 48'000);
    sound.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    writeSound(path("damaged.flac"), sound);
    std::string bytes = readBytes(path("damaged.flac"));
    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 3000, 'Z');
    writeBytes(path("damaged.flac"), bytes);
    EXPECT_TRUE(isRefused("damaged.flac", {"damaged"}));
}

TEST_F(ProcessInput, AFileThatOnlyLacksWhatFollowsTheSoundIsTaken) {
    const Sound in = makeNoise(2, 1000);
    writeSound(path("in.wav"), in);
    std::string bytes = readBytes(path("in.wav"));
    bytes[4] = static_cast<char>(bytes[4] ^ 0x40);  // the whole is announced 64 bytes longer or shorter
    bytes[5] = static_cast<char>(bytes[5] + 1);     // and 256 longer
    writeBytes(path("in.wav"), bytes);
    ASSERT_TRUE(succeededQuietly(processFile("in.wav")));
    EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, in.samples));
}

TEST_F(ProcessInput, AStreamedWavFileWithoutLengthsIsReadToItsEnd) {
    const Sound in = makeNoise(2, 1000);
    writeSound(path("in.wav"), in);
    const std::string whole = readBytes(path("in.wav"));
    for (const std::uint32_t placeholder : {0xFFFFFFFFu, 0x7FFFF000u}) {
        std::string bytes = whole;
        std::memcpy(&bytes[4], &placeholder, 4);
        std::memcpy(&bytes[bytes.find("data") + 4], &placeholder, 4);
        writeBytes(path("in.wav"), bytes);
        ASSERT_TRUE(succeededQuietly(processFile("in.wav")));
        EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, in.samples));
    }
}

TEST_F(ProcessInput, AStreamedFlacFileWithoutALengthIsReadToItsEnd) {
    Sound sound = makeNoise(2, 24'000);
    sound.format = SF_FORMAT_FLAC | SF_FORMAT_PCM_16;
    writeSound(path("in.flac"), sound);
    const Sound in = readSound(path("in.flac"));
    std::string bytes = readBytes(path("in.flac"));
    bytes[21] = static_cast<char>(bytes[21] & 0xF0);  // the length's 36 bits, in the first metadata block
    bytes.replace(22, 4, 4, '\0');
    writeBytes(path("in.flac"), bytes);
    ASSERT_TRUE(succeededQuietly(processFile("in.flac")));
    EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, in.samples));
    writeBytes(path("cut.flac"), bytes.substr(0, bytes.size() / 2));
    EXPECT_TRUE(isRefused("cut.flac", {"truncated"}));
}

TEST_F(ProcessInput, AFileFromAPipeOnStandardInputIsTaken) {
    for (const int format : {SF_FORMAT_WAV | SF_FORMAT_FLOAT, SF_FORMAT_FLAC | SF_FORMAT_PCM_16,
                             SF_FORMAT_OGG | SF_FORMAT_VORBIS}) {
        Sound sound = makeNoise(2, 5000);
        sound.format = format;
        writeSound(path("in"), sound);
        Launch launch = tool({"process", "/dev/stdin", path("out.wav"), "--quiet"});
        launch.input = readBytes(path("in"));
        ASSERT_TRUE(succeededQuietly(run(launch)));
        EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, readSound(path("in")).samples));
        EXPECT_TRUE(namesIn(temporaryFolder).empty());
    }
}

TEST_F(ProcessInput, ATruncatedFileFromAPipeIsRefused) {
    writeSound(path("in"), makeNoise(2, 5000));
    Launch launch = tool({"process", "/dev/stdin", path("out.wav"), "--quiet"});
    launch.input = readBytes(path("in")).substr(0, 20'000);
    EXPECT_TRUE(failedWith(run(launch), {"/dev/stdin", "truncated"}));
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"in"});
}

TEST_F(ProcessInput, AnEmptyPipeIsRefused) {
    EXPECT_TRUE(failedWith(runTool({"process", "/dev/stdin", path("out.wav")}), {"/dev/stdin", "empty"}));
}

TEST_F(ProcessInput, ANamedPipeIsReadToItsEnd) {
    const Sound in = makeNoise(2, 100'000);  // more than a pipe holds
    writeSound(path("in.wav"), in);
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    ChildProcess child(tool({"process", path("pipe"), path("out.wav"), "--quiet"}));
    writeBytes(path("pipe"), readBytes(path("in.wav")));
    EXPECT_TRUE(succeededQuietly(child.wait()));
    EXPECT_TRUE(sameBits(readSound(path("out.wav")).samples, in.samples));
}

TEST_F(ProcessInput, APipeWhoseReadFailsIsAnErrorAndLeavesNothing) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    ChildProcess child(withBrokenReads(path("pipe"), 0));
    { const std::ofstream writer(path("pipe")); }
    EXPECT_TRUE(failedWith(child.wait(), {"pipe", "Input/output error"}));
    EXPECT_EQ(namesIn(folder), std::vector<std::string>{"pipe"});
    EXPECT_TRUE(namesIn(temporaryFolder).empty());
}

TEST_F(ProcessInput, ATemporaryFolderThatIsMissingIsToldWhereAPipeNeedsIt) {
    Launch launch = tool({"process", "/dev/stdin", path("out.wav")});
    launch.environment["TMPDIR"] = path("nowhere");
    EXPECT_TRUE(failedWith(run(launch), {"temporary folder", "TMPDIR"}));
}

}  // namespace
}  // namespace korva::test
