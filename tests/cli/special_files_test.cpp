// Devices that a system has as files: one that takes nothing, and one without end.
#include "tests/cli/preset_tool_test.h"

namespace korva::test {
namespace {

class SpecialFiles : public PresetToolTest {};

TEST_F(SpecialFiles, HelpThatCannotBePrintedIsAnError) {
    Launch launch = tool({"--help"});
    launch.outputPath = "/dev/full";
    EXPECT_TRUE(failedWith(run(launch), {"standard output", "No space left"}));
}

TEST_F(SpecialFiles, ACatalogueThatCannotBePrintedIsAnError) {
    Launch launch = tool({"catalogue"});
    launch.outputPath = "/dev/full";
    EXPECT_TRUE(failedWith(run(launch), {"standard output", "No space left"}));
}

TEST_F(SpecialFiles, AListOfFaultsThatCannotBePrintedIsAnError) {
    Launch launch = presetLaunch({"check", file("{}")});
    launch.outputPath = "/dev/full";
    EXPECT_TRUE(failedWith(run(launch), {"standard output", "No space left"}));
}

TEST_F(SpecialFiles, AnEndlessDeviceIsAnErrorAndIsWrittenNowhere) {
    Launch launch = presetLaunch({"check", "/dev/zero"});
    launch.fileSizeLimit = 1 << 20;
    EXPECT_TRUE(failedWith(run(launch), {"/dev/zero", "larger than 64 MiB"}));
    EXPECT_EQ(namesIn(temporaryFolder), std::vector<std::string>{});
}

}  // namespace
}  // namespace korva::test
