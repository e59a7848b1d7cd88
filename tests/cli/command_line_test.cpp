#include "tests/cli/tool_test.h"

namespace korva::test {
namespace {

class CommandLine : public ToolTest {};

TEST_F(CommandLine, HelpListsTheSubcommands) {
    const Outcome outcome = runTool({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_NE(outcome.output.find("preset"), std::string::npos);
}

TEST_F(CommandLine, VersionIsTheProjects) {
    const Outcome outcome = runTool({"--version"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "korva " KORVA_VERSION "\n");
    EXPECT_EQ(outcome.error, "");
}

TEST_F(CommandLine, WithoutASubcommandIsAnErrorThatPointsToHelp) {
    EXPECT_TRUE(failedWith(runTool({}), {"subcommand", "korva --help"}));
}

TEST_F(CommandLine, AnUnknownSubcommandIsNamed) {
    EXPECT_TRUE(failedWith(runTool({"frobnicate"}), {"unknown subcommand 'frobnicate'", "korva --help"}));
}

}  // namespace
}  // namespace korva::test
