#include "korva/monitor/requests.h"

#include <signal.h>

#include <nlohmann/json.hpp>

#include "tests/cli/monitor/monitor_test.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;
using platform::RegistryKey;

TEST(MonitorRequests, CountOnAndSkipTheNumberThatMeansOff) {
    EXPECT_EQ(tool::requestAfter(0), 1U);
    EXPECT_EQ(tool::requestAfter(41), 42U);
    EXPECT_EQ(tool::requestAfter(0xFFFFFFFE), 0xFFFFFFFFU);
    EXPECT_EQ(tool::requestAfter(0xFFFFFFFF), 1U);
}

TEST(MonitorRequests, AreNamedWithAndWithoutCaptureInAnyCase) {
    for (const tool::Request& request : tool::allRequests()) {
        EXPECT_EQ(tool::requestOf(request.value), &request);
        EXPECT_EQ(tool::requestOf(request.shortName()), &request);
    }
    EXPECT_EQ(tool::allRequests().size(), 5U);
    EXPECT_EQ(tool::requestOf("dspcyclecount"), &tool::allRequests()[0]);
    EXPECT_EQ(tool::requestOf("Capture"), nullptr);
    EXPECT_EQ(tool::requestOf(""), nullptr);
}

class MonitorRequest : public MonitorTest {
protected:
    const RegistryKey key = makeLive(instanceName(1));
};

TEST_F(MonitorRequest, CountsOnFromTheNumberInTheKey) {
    setNumber(key, "CaptureDSPCycleCount", 41);
    std::uint32_t written = 0;
    EXPECT_EQ(tool::ask(key, "CaptureDSPCycleCount", written), 0);
    EXPECT_EQ(written, 42U);
    EXPECT_EQ(numberOf(key, "CaptureDSPCycleCount"), 42U);
}

TEST_F(MonitorRequest, ReplacesANumberOfAnotherType) {
    setNarrow(key, "CaptureDSPCycleCount", "text");
    std::uint32_t written = 0;
    EXPECT_EQ(tool::ask(key, "CaptureDSPCycleCount", written), 0);
    EXPECT_EQ(numberOf(key, "CaptureDSPCycleCount"), 1U);
}

TEST_F(MonitorRequest, OfLevelsTurnsMeteringOffUnlessAnotherAskedSince) {
    {
        tool::LevelQuestions questions(key);
        EXPECT_EQ(questions.ask(), 0);
        EXPECT_EQ(numberOf(key, "CaptureLevelMeters"), 1U);
    }
    EXPECT_EQ(numberOf(key, "CaptureLevelMeters"), 0U);
    {
        tool::LevelQuestions questions(key);
        EXPECT_EQ(questions.ask(), 0);
        setNumber(key, "CaptureLevelMeters", 2);
    }
    EXPECT_EQ(numberOf(key, "CaptureLevelMeters"), 2U);
}

TEST_F(MonitorRequest, ThatWasNeverPutTurnsNothingOff) {
    setNumber(key, "CaptureLevelMeters", 7);
    { const tool::LevelQuestions questions(key); }
    EXPECT_EQ(numberOf(key, "CaptureLevelMeters"), 7U);
}

TEST_F(MonitorRequest, PrintsTheAnswer) {
    const AnsweringObject object(key);
    const Outcome outcome = monitor({"--request", "DSPCycleCount"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.output, instanceName(1) + "  DSPCycleCount 7\n");
    EXPECT_EQ(monitor({"--request", "capturedspcyclecount"}).output,
              instanceName(1) + "  DSPCycleCount 14\n");
}

TEST_F(MonitorRequest, PrintsTheAnswerAsJson) {
    const AnsweringObject object(key);
    const Outcome outcome = monitor({"--request", "ParamBytesSentByDSP", "--json"});
    EXPECT_EQ(Json::parse(outcome.output), (Json{{"request", "ParamBytesSentByDSP"},
                                                 {"answers",
                                                  {{{"instance", instanceName(1)},
                                                    {"changed", true},
                                                    {"values",
                                                     {{"ParamBytesSentByDSP", 7},
                                                      {"ParamBytesSentByDSPClockStart", nullptr},
                                                      {"ParamBytesSentByDSPClockEnd", nullptr}}}}}}}));
}

TEST_F(MonitorRequest, ForLevelsMeasuresAndThenTurnsMeteringOff) {
    const AnsweringObject object(key);
    const Outcome outcome = monitor({"--request", "LevelMeters", "--interval", "20"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("InputLevelMeters [0.5,"), std::string::npos) << outcome.output;
    EXPECT_EQ(numberOf(key, "CaptureLevelMeters"), 0U);
}

TEST_F(MonitorRequest, SaysWhenNobodyAnswers) {
    const Outcome outcome = monitor({"--request", "DSPFrameCount"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.output, instanceName(1) +
                                  "  DSPFrameCount -  (no answer within 1 s: no stream is locked, no "
                                  "engine is there, or it is still 0)\n");
    EXPECT_EQ(outcome.error, "");
}

TEST_F(MonitorRequest, SaysWhenTheAnswerMayBeTheOldOne) {
    setNumber(key, "DSPFrameCount", 5);
    const Outcome outcome = monitor({"--request", "DSPFrameCount"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("DSPFrameCount 5  (as before: "), std::string::npos);
}

TEST_F(MonitorRequest, GoesToEveryLiveInstanceOrToTheOneThatIsNamed) {
    const RegistryKey second = makeLive(instanceName(2));
    const AnsweringObject object(key);
    const AnsweringObject other(second);
    EXPECT_EQ(monitor({"--request", "DSPCycleCount", "--instance", instanceName(2)}).output,
              instanceName(2) + "  DSPCycleCount 7\n");
    EXPECT_EQ(monitor({"--request", "DSPCycleCount"}).output,
              instanceName(1) + "  DSPCycleCount 7\n" + instanceName(2) + "  DSPCycleCount 14\n");
}

TEST_F(MonitorRequest, RefusesNamesThatAreNone) {
    EXPECT_TRUE(
        failedWith(monitor({"--request", "CPUUsage"}), {"'CPUUsage'", "DSPCycleCount, DSPFrameCount"}));
    EXPECT_TRUE(failedWith(monitor({"--request", "DSPCycleCount", "--instance", instanceName(5)}),
                           {"no live instance " + instanceName(5)}));
}

TEST_F(MonitorRequest, EndsByCtrlCWhileItWaits) {
    ChildProcess child(monitorLaunch({"--request", "LevelMeters", "--interval", "60000"}));
    ASSERT_TRUE(waitUntil([&] { return numberOf(key, "CaptureLevelMeters") != 0; }));
    child.send(SIGINT);
    EXPECT_EQ(child.wait().exitCode, 130);
    EXPECT_EQ(numberOf(key, "CaptureLevelMeters"), 0U);
}

}  // namespace
}  // namespace korva::test
