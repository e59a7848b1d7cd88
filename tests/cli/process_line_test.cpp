#include "tests/cli/process_support.h"

namespace korva::test {
namespace {

class ProcessLine : public ToolTest {
protected:
    ProcessLine() { writeSound(path("in.wav"), makeNoise(2, 100)); }

    /// `korva process in.wav out.wav` with these options.
    [[nodiscard]] Outcome processWith(const std::vector<std::string>& options) const {
        return process(path("in.wav"), path("out.wav"), options);
    }
    [[nodiscard]] bool hasOutput() const { return std::filesystem::exists(path("out.wav")); }
};

TEST_F(ProcessLine, HelpOfProcessNamesEveryOptionAndGivesAnExample) {
    const Outcome outcome = runTool({"process", "--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    for (const char* const part :
         {"IN", "OUT", "--effect", "--output-layout", "--library", "--generation", "--buffer", "--realtime",
          "--meters", "--json", "--quiet", "Example", "korva process film.wav"}) {
        EXPECT_NE(outcome.output.find(part), std::string::npos) << part;
    }
}

TEST_F(ProcessLine, AnUnknownOptionIsNamed) {
    EXPECT_TRUE(
        failedWith(processWith({"--frobnicate"}), {"unknown option '--frobnicate'", "korva process --help"}));
    EXPECT_FALSE(hasOutput());
}

TEST_F(ProcessLine, AMissingFileNameIsNamed) {
    EXPECT_TRUE(failedWith(runTool({"process"}), {"IN", "korva process --help"}));
    EXPECT_TRUE(failedWith(runTool({"process", path("in.wav")}), {"OUT", "korva process --help"}));
}

TEST_F(ProcessLine, AFileNameTooManyIsNamed) {
    EXPECT_TRUE(failedWith(processWith({"third.wav"}), {"unexpected argument 'third.wav'"}));
    EXPECT_FALSE(hasOutput());
}

TEST_F(ProcessLine, AnOptionWithoutItsValueIsNamed) {
    EXPECT_TRUE(failedWith(processWith({"--buffer"}), {"--buffer"}));
}

TEST_F(ProcessLine, AValueForAFlagIsAnError) {
    EXPECT_TRUE(failedWith(processWith({"--meters=maybe"}), {"meters", "korva process --help"}));
}

TEST_F(ProcessLine, ABufferOutsideOneToAMillionFramesIsRefused) {
    for (const char* const frames : {"0", "-1", "-480", "1000001", "4294967297", "abc", "12x", "4.5", ""}) {
        const Outcome outcome = processWith({"--buffer", frames});
        EXPECT_TRUE(failedWith(outcome, {"--buffer", "1 to 1000000", "'" + std::string(frames) + "'"}))
            << frames;
    }
    EXPECT_FALSE(hasOutput());
}

TEST_F(ProcessLine, ABufferOfOneAndOfAMillionFramesIsTaken) {
    EXPECT_TRUE(succeededQuietly(processWith({"--buffer", "1"})));
    EXPECT_TRUE(succeededQuietly(processWith({"--buffer", "1000000"})));
}

TEST_F(ProcessLine, AnUnknownEffectIsRefusedWithThoseThereAre) {
    EXPECT_TRUE(failedWith(processWith({"--effect", "gfx"}), {"--effect", "sfx, mfx or efx", "'gfx'"}));
    EXPECT_FALSE(hasOutput());
}

TEST_F(ProcessLine, AnUnknownLayoutIsRefusedWithThoseThereAre) {
    for (const char* const layout : {"9.1", "63", "0x", "0xG", "0x3 ", "STEREO"}) {
        const Outcome outcome = processWith({"--output-layout", layout});
        EXPECT_TRUE(
            failedWith(outcome, {"--output-layout", "mono, stereo, quad, 5.1, 5.1-side, 7.1", layout}))
            << layout;
    }
    EXPECT_FALSE(hasOutput());
}

TEST_F(ProcessLine, AMaskOfNoneOrOverEightSpeakersIsRefused) {
    EXPECT_TRUE(failedWith(processWith({"--output-layout", "0x0"}), {"0x0", "0 speakers", "1 to 8"}));
    EXPECT_TRUE(failedWith(processWith({"--output-layout", "0x1FF"}), {"0x1FF", "9 speakers", "1 to 8"}));
    EXPECT_FALSE(hasOutput());
}

TEST_F(ProcessLine, AMaskOfUnknownSpeakersIsRefused) {
    for (const char* const mask : {"0x40000", "0x80000000", "0x100000001"}) {
        EXPECT_TRUE(failedWith(processWith({"--output-layout", mask}), {mask, "0x20000"})) << mask;
    }
    EXPECT_FALSE(hasOutput());
}

TEST_F(ProcessLine, EachNamedLayoutIsItsMask) {
    const std::vector<std::pair<std::string, std::uint32_t>> layouts = {
        {"mono", 0x4}, {"stereo", 0x3}, {"quad", 0x33}, {"5.1", 0x3F}, {"5.1-side", 0x60F}, {"7.1", 0x63F}};
    for (const auto& [name, mask] : layouts) {
        ASSERT_TRUE(succeededQuietly(processWith({"--output-layout", name}))) << name;
        const std::vector<int> wanted = positionsOfMask(mask);
        const Sound out = readSound(path("out.wav"));
        EXPECT_EQ(static_cast<std::size_t>(out.channels), wanted.size()) << name;
        // One and two channels need no word about their speakers.
        EXPECT_EQ(out.positions, wanted.size() > 2 ? wanted : std::vector<int>()) << name;
    }
}

TEST_F(ProcessLine, OnlyAStreamEffectMayChangeTheNumberOfChannels) {
    for (const char* const effect : {"mfx", "efx"}) {
        const Outcome outcome = processWith({"--effect", effect, "--output-layout", "mono"});
        EXPECT_TRUE(failedWith(outcome, {"--output-layout mono", "--effect sfx"})) << effect;
        EXPECT_FALSE(hasOutput());
        EXPECT_TRUE(succeededQuietly(processWith({"--effect", effect, "--output-layout", "0x600"})))
            << effect;
        std::filesystem::remove(path("out.wav"));
    }
    EXPECT_TRUE(succeededQuietly(processWith({"--effect", "sfx", "--output-layout", "mono"})));
}

TEST_F(ProcessLine, JsonAndQuietExcludeEachOther) {
    EXPECT_TRUE(failedWith(processWith({"--json"}), {"--json", "--quiet"}));
}

TEST_F(ProcessLine, AnUnknownKernelsVersionIsRefusedWithThoseThereAre) {
    Launch launch = tool({"process", path("in.wav"), path("out.wav")});
    launch.environment["KORVA_KERNELS"] = "abacus";
    EXPECT_TRUE(failedWith(run(launch), {"KORVA_KERNELS", "'abacus'", "plain"}));
    EXPECT_FALSE(hasOutput());
}

TEST_F(ProcessLine, ALineBreakInAFileNameLeavesTheErrorOneLine) {
    EXPECT_TRUE(failedWith(process(path("no\nsuch\tfile"), path("out.wav")), {"no\\x0Asuch\\x09file"}));
}

TEST_F(ProcessLine, NoControlCharacterOfAFileNameReachesTheTerminal) {
    EXPECT_TRUE(failedWith(process(path("a\x1B[2J\x7F\xC2\x9B\x32J\xC2\x80\xC2\xA0"), path("out.wav")),
                           {"a\\x1B[2J\\x7F\\x9B2J\\x80\xC2\xA0'"}));
}

}  // namespace
}  // namespace korva::test
