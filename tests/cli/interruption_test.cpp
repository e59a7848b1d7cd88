// What Ctrl-C and its like do, on every system.
#include <csignal>

#include "tests/cli/own_key_test.h"

namespace korva::test {
namespace {

class InterruptedTool : public OwnKeyTest {};

TEST_F(InterruptedTool, EndsWellWhereThatIsTheWayToEnd) {
    ChildProcess watch(registryLaunch({"watch", key}));
    ASSERT_TRUE(watch.waitForError("waiting for the key"));
    watch.send(SIGINT);
    const Outcome outcome = watch.wait();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
}

TEST_F(InterruptedTool, LeavesAnInputThatNeverEnds) {
    Launch launch = registryLaunch({"import", "-"});
    launch.inputStaysOpen = true;
    ChildProcess import(launch);
    // More than a pipe holds: once it is out, the tool reads.
    import.say(std::string(1 << 20, ' '));
    import.send(SIGINT);
    const Outcome outcome = import.wait();
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_EQ(outcome.error, "korva: error: interrupted\n");
    EXPECT_EQ(outcome.output, "");
}

TEST_F(InterruptedTool, SeesAChangeBeforeAnybodyStopsIt) {
    quietly({"create", key});
    ChildProcess watch(registryLaunch({"watch", key}));
    ASSERT_TRUE(watch.waitForError("watching"));
    quietly({"set", key, "n", "sz", "x"});
    EXPECT_TRUE(watch.waitForOutput("  n  sz  \"x\"\n"));
    watch.send(SIGINT);
    EXPECT_EQ(watch.wait().exitCode, 0);
}

TEST_F(InterruptedTool, StopsByItselfWhenNobodyReadsWhatItPrints) {
    quietly({"create", key});
    ChildProcess watch(registryLaunch({"watch", key}));
    ASSERT_TRUE(watch.waitForError("watching"));
    watch.closeOutput();
    const Outcome outcome = watch.wait();
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_NE(outcome.error.find("cannot write to standard output: Broken pipe"), std::string::npos)
        << outcome.error;
}

}  // namespace
}  // namespace korva::test
