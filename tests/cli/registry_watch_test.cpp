#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include <optional>

#include "tests/cli/registry_tool_test.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;
const std::string key = "HKLM\\Software\\Demo";
const std::string longKey = "HKEY_LOCAL_MACHINE\\Software\\Demo";

bool pollUntilReadable(int descriptor) {
    constexpr int patienceMs = 20'000;
    pollfd waiting = {descriptor, POLLIN, 0};
    return poll(&waiting, 1, patienceMs) == 1;
}

class RegistryWatchCommand : public RegistryToolTest {
protected:
    /// The command at work: it has taken its first look.
    void watch(std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"watch", key});
        child.emplace(registryLaunch(options));
        ASSERT_TRUE(child->waitForError("Ctrl-C ends it\n"));
    }
    /// What it printed, once it has printed `text` and got Ctrl-C.
    [[nodiscard]] std::string outputUntil(const std::string& text) {
        EXPECT_TRUE(child->waitForOutput(text)) << text;
        child->send(SIGINT);
        const Outcome outcome = child->wait();
        EXPECT_EQ(outcome.exitCode, 0);
        return outcome.output;
    }

    std::optional<ChildProcess> child;
};

TEST_F(RegistryWatchCommand, PrintsALineForEachValueThatIsSetOrDeleted) {
    quietly({"set", key, "old", "sz", "x"});
    watch();
    quietly({"set", key, "n", "dword", "40"});
    ASSERT_TRUE(child->waitForOutput("\n"));
    quietly({"set", key + "\\A", "@", "sz", "text"});
    ASSERT_TRUE(child->waitForOutput("text"));
    quietly({"delete", key, "old"});
    EXPECT_EQ(outputUntil("deleted  "), "set          " + longKey + "  n  dword  40 (0x00000028)\n" +
                                            "created key  " + longKey + "\\A\n" + "set          " + longKey +
                                            "\\A  @  sz  \"text\"\n" + "deleted      " + longKey + "  old\n");
}

TEST_F(RegistryWatchCommand, TellsOfKeysThatComeAndGo) {
    quietly({"create", key});
    watch();
    quietly({"create", key + "\\A\\B"});
    ASSERT_TRUE(child->waitForOutput("\\A\\B\n"));
    quietly({"delete", key + "\\A"});
    EXPECT_EQ(outputUntil("deleted key  " + longKey + "\\A\n"),
              "created key  " + longKey + "\\A\n" + "created key  " + longKey + "\\A\\B\n" + "deleted key  " +
                  longKey + "\\A\\B\n" + "deleted key  " + longKey + "\\A\n");
}

TEST_F(RegistryWatchCommand, WaitsForAKeyThatIsNotThereYet) {
    watch();
    quietly({"set", key, "n", "sz", "x"});
    const std::string output = outputUntil("\"x\"\n");
    EXPECT_EQ(output, "created key  " + longKey + "\n" + "set          " + longKey + "  n  sz  \"x\"\n");
}

TEST_F(RegistryWatchCommand, GoesOnWhenItsKeyIsDeletedAndMadeAgain) {
    quietly({"create", key});
    watch();
    quietly({"delete", key});
    ASSERT_TRUE(child->waitForOutput("deleted key  " + longKey + "\n"));
    quietly({"create", key});
    ASSERT_TRUE(child->waitForOutput("created key  " + longKey + "\n"));
    quietly({"set", key, "n", "sz", "x"});
    EXPECT_NE(outputUntil("\"x\"\n").find("set          " + longKey + "  n"), std::string::npos);
}

TEST_F(RegistryWatchCommand, PrintsAJsonValueOnEachLineIfAsked) {
    quietly({"set", key, "old", "sz", "x"});
    watch({"--json"});
    quietly({"set", key, "n", "dword", "40"});
    ASSERT_TRUE(child->waitForOutput("\n"));
    quietly({"delete", key, "old"});
    ASSERT_TRUE(child->waitForOutput("deleted"));
    quietly({"delete", key});
    const std::string output = outputUntil("deleted key");
    std::vector<Json> lines;
    for (std::size_t begin = 0; begin < output.size(); begin = output.find('\n', begin) + 1) {
        lines.push_back(Json::parse(output.substr(begin, output.find('\n', begin) - begin)));
    }
    const std::vector<Json> expected = {
        {{"change", "set"}, {"key", longKey}, {"name", "n"}, {"type", "dword"}, {"data", 40}},
        {{"change", "deleted"}, {"key", longKey}, {"name", "old"}},
        {{"change", "deleted key"}, {"key", longKey}}};
    EXPECT_EQ(lines, expected);
}

TEST_F(RegistryWatchCommand, EndsWellByCtrlCAtAnyTime) {
    watch();
    child->send(SIGINT);
    const Outcome outcome = child->wait();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.error, "korva: waiting for the key '" + longKey + "'; Ctrl-C ends it\n");
}

TEST_F(RegistryWatchCommand, EndsByOtherSignalsAsOtherCommandsDo) {
    watch();
    child->send(SIGTERM);
    const Outcome outcome = child->wait();
    EXPECT_EQ(outcome.exitCode, 128 + SIGTERM);
    EXPECT_TRUE(outcome.error.ends_with("korva: error: interrupted\n"));
}

TEST_F(RegistryWatchCommand, HasWholeLinesOnlyWhenItEndsWhileNobodyReads) {
    quietly({"create", key});
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const int reader = open(path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const int capacity = fcntl(reader, F_SETPIPE_SZ, 4096);
    Launch launch = registryLaunch({"watch", key});
    launch.outputPath = path("pipe");
    child.emplace(launch);
    ASSERT_TRUE(child->waitForError("Ctrl-C ends it\n"));
    std::string text = "Windows Registry Editor Version 5.00\n[" + key + "]\n";
    for (int i = 0; i < 500; ++i) {
        text += "\"n" + std::to_string(i) + "\"=\"" + std::string(40, 'a') + "\"\n";
    }
    EXPECT_TRUE(succeededQuietly(registryReading(text, {"import", "-"})));
    std::string read(static_cast<std::size_t>(capacity), ' ');
    ASSERT_TRUE(pollUntilReadable(reader));
    child->send(SIGINT);
    EXPECT_EQ(child->wait().exitCode, 0);
    read.resize(static_cast<std::size_t>(::read(reader, read.data(), read.size())));
    close(reader);
    EXPECT_TRUE(read.ends_with("\"\n"));
}

TEST_F(RegistryWatchCommand, FailsWhenItsLinesCannotBePrinted) {
    quietly({"create", key});
    for (const bool closed : {true, false}) {
        Launch launch = registryLaunch({"watch", key});
        if (closed) {
            launch.closedStreams = {1};
        } else {
            launch.outputPath = "/dev/full";
        }
        child.emplace(launch);
        ASSERT_TRUE(child->waitForError("Ctrl-C ends it\n"));
        quietly({"set", key, "n", "dword", closed ? "1" : "2"});
        const Outcome outcome = child->wait();
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_NE(outcome.error.find("korva: error: cannot write to standard output"), std::string::npos);
    }
}

TEST_F(RegistryWatchCommand, EndsWhenTheReaderOfItsLinesIsGoneAlsoWithoutAChange) {
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0600), 0);
    const int reader = open(path("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    Launch launch = registryLaunch({"watch", key});
    launch.outputPath = path("pipe");
    child.emplace(launch);
    ASSERT_TRUE(child->waitForError("Ctrl-C ends it\n"));
    close(reader);
    const Outcome outcome = child->wait();
    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_TRUE(outcome.error.ends_with("korva: error: cannot write to standard output: Broken pipe\n"));
}

TEST_F(RegistryWatchCommand, RefusesAWordThatIsNoKey) {
    EXPECT_TRUE(failedWith(registry({"watch", "HKU\\A"}), {"'HKU\\A' is no key"}));
}

}  // namespace
}  // namespace korva::test
