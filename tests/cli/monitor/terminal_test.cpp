#include <signal.h>

#include <fstream>
#include <optional>
#include <sstream>

#include "tests/cli/monitor/monitor_test.h"
#include "tests/cli/monitor/tmux.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

using platform::RegistryKey;

class MonitorTerminal : public MonitorTest {
protected:
    void SetUp() override {
        key = makeLive(instanceName(1));
        setTypicalValues(key);
    }

    /// The view, whose process id stands in a file; the terminal's modes before and after it stand in others,
    /// and what the shell says when it is over.
    void start(int columns = 120, int rows = 40, const std::string& arguments = "",
               const std::string& shell = "") {
        terminal.emplace(
            folder.string(), columns, rows,
            "trap : INT; cd " + folder.string() + "; stty -g > before; " + shell +
                " LSAN_OPTIONS=print_suppressions=0:suppressions=" KORVA_LIBRARY_LEAKS
                " sh -c 'echo $$ > pid; exec " KORVA_TOOL " monitor " +
                arguments +
                "' 2> error; code=$?; stty -g > after; echo over with $code; cat error; exec sleep 60");
    }
    [[nodiscard]] std::string read(const std::string& name) const {
        std::ifstream file(folder / name);
        return (std::ostringstream() << file.rdbuf()).str();
    }
    [[nodiscard]] pid_t monitorPid() const { return std::stoi(read("pid")); }
    [[nodiscard]] testing::AssertionResult endedWith(int code) const {
        if (!terminal->waitFor("over with " + std::to_string(code))) {
            return testing::AssertionFailure() << terminal->screen();
        }
        // The other screen is back, and the view's text is not on it.
        const bool isClean = terminal->screen().find("quit") == std::string::npos;
        const bool isSame = !read("before").empty() && read("before") == read("after");
        return isClean && isSame
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure() << terminal->screen() << read("before") << read("after");
    }
    [[nodiscard]] bool isMetering() const { return numberOf(key, "CaptureLevelMeters") != 0; }

    RegistryKey key;
    std::optional<Tmux> terminal;
};

TEST_F(MonitorTerminal, ShowsWhatTheInstanceTells) {
    start();
    ASSERT_TRUE(terminal->waitFor("up/down: choose"));
    const std::string screen = terminal->screen();
    for (const char* const text : {"korva monitor   1 instance   every 100 ms", "6dcc1ac8  MFX", "2.1.2.17",
                                   "0x00010002", "48000 Hz", "3.4 %", "10 ms", "front left      -6.0 ██",
                                   "front right    -12.0 ██", "1 input  2 output  3 DSP input"}) {
        EXPECT_NE(screen.find(text), std::string::npos) << text << "\n" << screen;
    }
    EXPECT_EQ(screen.find("side left"), std::string::npos);  // not a speaker of stereo
    EXPECT_TRUE(waitUntil([&] { return isMetering(); }));
}

TEST_F(MonitorTerminal, FollowsWhatChanges) {
    start();
    ASSERT_TRUE(terminal->waitFor("-6.0"));
    setLevels(key, "InputLevelMeters", {1.0F, 0.25F});
    EXPECT_TRUE(terminal->waitFor("front left       0.0 ███"));
    setNumber(key, "CPUUsage", 987);
    EXPECT_TRUE(terminal->waitFor("98.7 %"));
}

TEST_F(MonitorTerminal, HasColoursForLevelsUnlessNobodyWantsThem) {
    start();
    ASSERT_TRUE(terminal->waitFor("front left"));
    EXPECT_NE(terminal->colouredScreen().find("\x1b[32m"), std::string::npos);
    terminal.reset();
    start(120, 40, "", "NO_COLOR=1");
    ASSERT_TRUE(terminal->waitFor("front left"));
    EXPECT_EQ(terminal->colouredScreen().find("\x1b[32m"), std::string::npos);
}

TEST_F(MonitorTerminal, ChoosesInstancesAndMetersByKeys) {
    const RegistryKey second = makeLive("{7dcc1ac8-4a3c-4a98-a3a7-000000000002}");
    setNarrow(second, "APOTypeStr", "EFX");
    setNumber(second, "SampleRate", 96000);
    start();
    ASSERT_TRUE(terminal->waitFor("48000 Hz"));
    terminal->press("Down");
    EXPECT_TRUE(terminal->waitFor("96000 Hz"));
    terminal->press("k");
    EXPECT_TRUE(terminal->waitFor("48000 Hz"));
    terminal->press("2");
    EXPECT_TRUE(terminal->waitFor("front left     -20.0"));
    terminal->press("Tab");
    EXPECT_TRUE(terminal->waitFor("front left         -"));
    terminal->press("j");
    EXPECT_TRUE(terminal->waitFor("96000 Hz"));
    end("{7dcc1ac8-4a3c-4a98-a3a7-000000000002}");
    EXPECT_TRUE(terminal->waitFor("48000 Hz"));
}

TEST_F(MonitorTerminal, EndsByQAndGivesTheTerminalBack) {
    start();
    ASSERT_TRUE(terminal->waitFor("q: quit"));
    ASSERT_TRUE(waitUntil([&] { return isMetering(); }));
    terminal->press("q");
    EXPECT_TRUE(endedWith(0));
    EXPECT_FALSE(isMetering());
}

TEST_F(MonitorTerminal, EndsByCtrlCAndGivesTheTerminalBack) {
    start();
    ASSERT_TRUE(terminal->waitFor("q: quit"));
    terminal->press("C-c");
    EXPECT_TRUE(endedWith(0));
    EXPECT_FALSE(isMetering());
}

TEST_F(MonitorTerminal, EndsBySignalsAndGivesTheTerminalBack) {
    for (const int signal : {SIGTERM, SIGHUP}) {
        start();
        ASSERT_TRUE(terminal->waitFor("q: quit"));
        kill(monitorPid(), signal);
        EXPECT_TRUE(endedWith(128 + signal));
        EXPECT_FALSE(isMetering());
        terminal.reset();
    }
}

TEST_F(MonitorTerminal, ACrashGivesTheTerminalBackToo) {
    for (const int signal : {SIGSEGV, SIGABRT, SIGQUIT}) {
        start(120, 40, "", "ASAN_OPTIONS=handle_segv=0:handle_abort=0 ");
        ASSERT_TRUE(terminal->waitFor("q: quit"));
        kill(monitorPid(), signal);
        EXPECT_TRUE(endedWith(128 + signal)) << signal;
        terminal.reset();
    }
}

TEST_F(MonitorTerminal, GivesTheTerminalBackWhileItIsStopped) {
    terminal.emplace(
        folder.string(), 120, 40,
        "cd " + folder.string() +
            "; set -m; stty -g > before; " KORVA_TOOL
            " monitor; stty -g > after; echo stopped; read line; fg; echo over with $?; exec sleep 60");
    ASSERT_TRUE(terminal->waitFor("q: quit"));
    terminal->press("C-z");
    ASSERT_TRUE(terminal->waitFor("stopped"));
    EXPECT_EQ(terminal->screen().find("q: quit"), std::string::npos);
    EXPECT_EQ(read("before"), read("after"));
    terminal->press("Enter");
    ASSERT_TRUE(terminal->waitFor("q: quit"));
    terminal->press("q");
    EXPECT_TRUE(terminal->waitFor("over with 0"));
}

TEST_F(MonitorTerminal, FitsAnySizeThatTheTerminalTakes) {
    start();
    ASSERT_TRUE(terminal->waitFor("q: quit"));
    terminal->resize(40, 10);
    ASSERT_TRUE(terminal->waitFor("FL   -6.0"));
    EXPECT_TRUE(terminal->waitFor("6dcc1ac8"));
    EXPECT_TRUE(terminal->waitFor("up/down: choose"));
    terminal->resize(160, 50);
    EXPECT_TRUE(terminal->waitFor("front left      -6.0"));
    terminal->resize(5, 2);
    EXPECT_TRUE(terminal->waitFor("korva\nup/do"));
}

TEST_F(MonitorTerminal, ShowsAsciiWhereThereIsNoMore) {
    setNarrow(key, "EndpointIdStrW", "M\xC3\xBCller");
    start(120, 40, "", "LC_ALL=C");
    ASSERT_TRUE(terminal->waitFor("front left      -6.0 ####"));
    EXPECT_NE(terminal->screen().find("M?ller"), std::string::npos);
}

TEST_F(MonitorTerminal, OfOneInstanceEndsWithIt) {
    start(120, 40, "--instance " + instanceName(1));
    ASSERT_TRUE(terminal->waitFor("q: quit"));
    end(instanceName(1));
    EXPECT_TRUE(endedWith(0));
    EXPECT_NE(read("error").find("the instance " + instanceName(1) + " has ended"), std::string::npos);
}

TEST_F(MonitorTerminal, ShowsOneTableOnATerminalThatCannotBePainted) {
    for (const std::string name : {"none-such", "dumb"}) {
        start(200, 40, "", "TERM=" + name);
        EXPECT_TRUE(endedWith(0)) << name;
        EXPECT_NE(terminal->screen().find("INSTANCE"), std::string::npos) << name;
    }
}

TEST_F(MonitorTerminal, SweepRemovesNothingUnlessOneAgrees) {
    makeStale(instanceName(2));
    makeStale(instanceName(3));
    for (const bool agrees : {false, true}) {
        terminal.emplace(folder.string(), 120, 40, KORVA_TOOL " monitor --sweep; echo over; exec sleep 60");
        ASSERT_TRUE(terminal->waitFor("Remove 2 left-over keys? [y/N]"));
        if (agrees) {
            terminal->press("y");
        }
        terminal->press("Enter");
        ASSERT_TRUE(terminal->waitFor("over\n"));
        EXPECT_EQ(hasKey(instanceName(2)), !agrees);
        EXPECT_EQ(hasKey(instanceName(3)), !agrees);
    }
}

}  // namespace
}  // namespace korva::test
