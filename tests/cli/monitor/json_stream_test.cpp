#include "korva/monitor/monitor_json.h"

#include <signal.h>
#include <sys/stat.h>

#include <limits>
#include <optional>

#include "tests/cli/monitor/monitor_test.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

using platform::RegistryKey;
using Json = nlohmann::json;

TEST(MonitorJson, WritesTimesToTheMillisecond) {
    using std::chrono::milliseconds;
    EXPECT_EQ(tool::timeText(std::chrono::system_clock::time_point(milliseconds(0))),
              "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(tool::timeText(std::chrono::system_clock::time_point(milliseconds(1'795'327'215'042))),
              "2026-11-22T06:00:15.042Z");
}

TEST(MonitorJson, HasNullForLevelsThatAreNoNumbers) {
    tool::InstanceView view;
    view.meters[0].value = {
        {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 1.5F}};
    const Json meters = tool::answerJson(view, "InputLevelMeters");
    EXPECT_EQ(meters, (Json{nullptr, nullptr, 1.5, 0, 0, 0, 0, 0}));
}

class MonitorStream : public MonitorTest {
protected:
    void SetUp() override {
        key = makeLive(instanceName(1));
        object.emplace(key);
    }
    void start(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), {"--json", "--interval", "10"});
        child.emplace(monitorLaunch(arguments));
    }
    [[nodiscard]] bool isMetering() const { return numberOf(key, "CaptureLevelMeters") != 0; }
    [[nodiscard]] bool waitForPulls(int more) const {
        const int from = object->levelPulls();
        return waitUntil([&] { return object->levelPulls() >= from + more; });
    }

    RegistryKey key;
    std::optional<AnsweringObject> object;
    std::optional<ChildProcess> child;
};

TEST_F(MonitorStream, IsALineForEachLookUntilCtrlC) {
    start();
    ASSERT_TRUE(waitForPulls(5));
    child->send(SIGINT);
    const Outcome outcome = child->wait();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    std::size_t lines = 0;
    for (std::size_t begin = 0; begin < outcome.output.size(); begin = outcome.output.find('\n', begin) + 1) {
        const Json line = Json::parse(outcome.output.substr(begin, outcome.output.find('\n', begin) - begin));
        EXPECT_EQ(line.at("instances").at(0).at("instance"), instanceName(1));
        ++lines;
    }
    EXPECT_GE(lines, 4);
}

TEST_F(MonitorStream, TurnsMeteringOffAtTheEndWhateverEndsIt) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        start();
        ASSERT_TRUE(waitForPulls(2));
        EXPECT_TRUE(isMetering());
        child->send(signal);
        EXPECT_EQ(child->wait().exitCode, signal == SIGINT ? 0 : 128 + signal);
        EXPECT_FALSE(isMetering());
    }
}

TEST_F(MonitorStream, LeavesMeteringOnForAnother) {
    start();
    ChildProcess other(monitorLaunch({"--json", "--interval", "10"}));
    ASSERT_TRUE(other.waitForOutput("\n"));
    ASSERT_TRUE(waitForPulls(4));
    child->send(SIGINT);
    EXPECT_EQ(child->wait().exitCode, 0);
    EXPECT_TRUE(waitForPulls(4));
    EXPECT_TRUE(waitUntil([&] { return isMetering(); }));
    other.send(SIGINT);
    EXPECT_EQ(other.wait().exitCode, 0);
    EXPECT_FALSE(isMetering());
}

TEST_F(MonitorStream, OfOneInstanceEndsWithIt) {
    start({"--instance", instanceName(1)});
    ASSERT_TRUE(child->waitForOutput("\n"));
    object.reset();
    end(instanceName(1));
    const Outcome outcome = child->wait();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "korva: the instance " + instanceName(1) + " has ended\n");
}

TEST_F(MonitorStream, GoesOnWithoutAnInstanceThatEnds) {
    static_cast<void>(makeLive(instanceName(2)));
    start();
    ASSERT_TRUE(child->waitForOutput("\n"));
    object.reset();
    end(instanceName(1));
    ASSERT_TRUE(child->waitForOutput("\"instances\":[{\"instance\":\"" + instanceName(2)));
    end(instanceName(2));
    ASSERT_TRUE(child->waitForOutput("\"instances\":[]"));
    static_cast<void>(makeLive(instanceName(3)));
    ASSERT_TRUE(child->waitForOutput("\"instances\":[{\"instance\":\"" + instanceName(3)));
    child->send(SIGINT);
    EXPECT_EQ(child->wait().exitCode, 0);
}

TEST_F(MonitorStream, EndsWhenItsReaderIsGoneAndTurnsMeteringOff) {
    Launch launch = monitorLaunch({"--json", "--interval", "10"});
    launch.outputPath = "/dev/full";
    const Outcome outcome = run(launch);
    EXPECT_TRUE(failedWith(outcome, {"cannot write to standard output"}));
    EXPECT_FALSE(isMetering());
}

}  // namespace
}  // namespace korva::test
