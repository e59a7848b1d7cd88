#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/cli/folder_watch.h"
#include "tests/cli/process_support.h"

namespace korva::test {
namespace {

/// So long that it takes minutes in buffers of one frame: a tool at work on it is in the middle.
constexpr std::uint32_t longFrames = 900'000'000;

class ProcessInterruption : public ToolTest {
protected:
    ProcessInterruption() {
        writeLongSound(path("in.wav"), longFrames);
        std::filesystem::create_directory(path("result"));
        launch = tool({"process", path("in.wav"), path("result/out.wav"), "--buffer", "1"});
    }

    /// What comes of a signal in the middle of the work.
    [[nodiscard]] Outcome interruptedBy(int signal) const {
        FolderWatch watch(path("result"));
        ChildProcess child(launch);
        EXPECT_TRUE(
            watch.waitForName().starts_with(".korva-"));  // the output's beginning, under a hidden name
        child.send(signal);
        return child.wait();
    }

    Launch launch;
};

TEST_F(ProcessInterruption, EndsWithOneLineAndTheSignalsExitCode) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        const Outcome outcome = interruptedBy(signal);
        EXPECT_EQ(outcome.exitCode, 128 + signal);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.error, "korva: error: interrupted\n");
    }
}

TEST_F(ProcessInterruption, LeavesNoOutputAndNoTemporaryFile) {
    EXPECT_EQ(interruptedBy(SIGINT).exitCode, 130);
    EXPECT_TRUE(namesIn(path("result")).empty());
    EXPECT_TRUE(namesIn(temporaryFolder).empty());
}

TEST_F(ProcessInterruption, LeavesAnExistingOutputUntouched) {
    writeBytes(path("result/out.wav"), "old");
    EXPECT_EQ(interruptedBy(SIGINT).exitCode, 130);
    EXPECT_EQ(readBytes(path("result/out.wav")), "old");
    EXPECT_EQ(namesIn(path("result")), std::vector<std::string>{"out.wav"});
}

TEST_F(ProcessInterruption, CountsUntilTheOutputIsInItsPlace) {
    writeSound(path("short.wav"), makeNoise(2, 100));
    writeBytes(path("result/out.wav"), "old");
    launch = onBrokenDisk(tool({"process", path("short.wav"), path("result/out.wav")}));
    launch.environment["BROKEN_SYNC"] = "interrupt";  // when all else is done
    const Outcome outcome = run(launch);
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(readBytes(path("result/out.wav")), "old");
    EXPECT_EQ(namesIn(path("result")), std::vector<std::string>{"out.wav"});
}

TEST_F(ProcessInterruption, PrintsNoReport) {
    launch.arguments.emplace_back("--json");
    EXPECT_EQ(interruptedBy(SIGINT).output, "");
}

TEST_F(ProcessInterruption, OfASignalThatTheParentIgnoresDoesNotHappen) {
    launch.ignoredSignals = {SIGHUP};
    FolderWatch watch(path("result"));
    ChildProcess child(launch);
    EXPECT_TRUE(watch.waitForName().starts_with(".korva-"));
    child.send(SIGHUP);
    child.send(SIGINT);
    EXPECT_EQ(child.wait().exitCode, 130);  // of the two, the one that isn't ignored
}

TEST_F(ProcessInterruption, ReachesAToolThatWaitsForItsInput) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    ChildProcess child(tool({"process", path("pipe"), path("result/out.wav")}));
    const int writer =
        open(path("pipe").c_str(), O_WRONLY);  // comes back when the tool has opened the other end
    child.send(SIGINT);
    const Outcome outcome = child.wait();
    close(writer);
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_EQ(outcome.error, "korva: error: interrupted\n");
    EXPECT_TRUE(namesIn(path("result")).empty());
    EXPECT_TRUE(namesIn(temporaryFolder).empty());
}

TEST_F(ProcessInterruption, ReachesAToolThatWaitsForTheReaderOfItsOutput) {
    writeSound(path("short.wav"), makeNoise(2, 50'000));  // more than a pipe holds
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    ChildProcess child(tool({"process", path("short.wav"), path("pipe"), "--quiet"}));
    const int reader =
        open(path("pipe").c_str(), O_RDONLY);  // comes back when the tool has opened the other end
    child.send(SIGTERM);
    const Outcome outcome = child.wait();
    close(reader);
    EXPECT_EQ(outcome.exitCode, 128 + SIGTERM);
    EXPECT_EQ(outcome.error, "korva: error: interrupted\n");
    EXPECT_TRUE(namesIn(temporaryFolder).empty());
}

TEST_F(ProcessInterruption, ClearsTheProgressBarThatATerminalShows) {
    launch.errorIsTerminal = true;
    ChildProcess child(launch);
    ASSERT_TRUE(child.waitForError(" %"));
    child.send(SIGINT);
    const Outcome outcome = child.wait();
    EXPECT_EQ(outcome.exitCode, 130);
    EXPECT_TRUE(outcome.error.starts_with("\r["));
    EXPECT_TRUE(outcome.error.ends_with("\r\x1b[Kkorva: error: interrupted\r\n"));
}

}  // namespace
}  // namespace korva::test
