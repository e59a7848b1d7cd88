#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include <optional>

#include "tests/cli/monitor/monitor_test.h"
#include "tests/support/seeded_endpoint.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;
using platform::RegistryKey;
namespace types = platform::registry_type;

class MonitorOnce : public MonitorTest {
protected:
    [[nodiscard]] Json json(std::vector<std::string> arguments = {}) const {
        arguments.insert(arguments.begin(), {"--once", "--json", "--interval", "10"});
        const Outcome outcome = monitor(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
        EXPECT_EQ(outcome.output.find('\n'), outcome.output.size() - 1);
        return Json::parse(outcome.output);
    }
    [[nodiscard]] Json onlyInstance() const { return json().at("instances").at(0); }
};

TEST_F(MonitorOnce, WithoutTheKeyOfAllTelemetryTellsWhatToMake) {
    EXPECT_TRUE(failedWith(monitor({}), {"no instance can show itself", registryPath(),
                                         "korva registry create 'HKLM\\Software\\Kestrelwright'"}));
    EXPECT_TRUE(failedWith(monitor({"--json", "--once"}), {"no instance can show itself"}));
}

TEST_F(MonitorOnce, WithoutInstancesSaysSo) {
    makeTelemetry();
    const Outcome outcome = monitor({});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output, "no live instance\n");
    EXPECT_EQ(outcome.error, "");
    EXPECT_TRUE(json().at("instances").empty());
}

TEST_F(MonitorOnce, InAPipePrintsOneTable) {
    setTypicalValues(makeLive(instanceName(1)));
    const Outcome outcome = monitor({"--interval", "10"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(
        outcome.output,
        "INSTANCE                                EFFECT  ENDPOINT                                            "
        "     INPUT     OUTPUT     RATE  LIBRARY   MODULE      STARTS  BUFFER   LOAD  IN dB  OUT dB  DSP IN dB  "
        "DSP OUT dB\n"
        "{6dcc1ac8-4a3c-4a98-a3a7-000000000001}  MFX     "
        "{0.0.0.00000000}.{e892327f-d50d-4004-bb6a-491ea775236e}  2 ch 0x3  2 ch 0x3  48000  2.1.2.17  "
        "0x00010002       3   10 ms  3.4 %   -6.0   -20.0          -           -\n");
}

TEST_F(MonitorOnce, JsonHasEachValueOfTheKey) {
    const RegistryKey key = makeLive(instanceName(1));
    setTypicalValues(key);
    setNumber(key, "ParamBytesSentByDSP", 100);
    setNumber(key, "ParamBytesSentByDSPClockStart", 5);
    setNumber(key, "ParamBytesReceivedByDSPClockEnd", 6);
    setNumber(key, "PresetDSPParamBytesSent", 9);
    setNumber(key, "PresetLoadStartTimeMS", 12);
    setNumber(key, "PresetLoad_ParamBytesReceivedByDSP", 13);
    setNumber(key, "DSPCycleCount", 14);
    setNumber(key, "DSPFrameCount", 15);
    setNumber(key, "WriteTime", 16);
    const Json instance = onlyInstance();
    EXPECT_EQ(instance.at("instance"), instanceName(1));
    EXPECT_EQ(instance.at("effect"), "MFX");
    EXPECT_EQ(instance.at("endpoint").at("name"), Json());
    EXPECT_EQ(instance.at("input"), (Json{{"channels", 2}, {"mask", 3}}));
    EXPECT_EQ(instance.at("dspOutput"), (Json{{"channels", 2}, {"mask", 3}}));
    EXPECT_EQ(instance.at("sampleRate"), 48000);
    EXPECT_EQ(instance.at("libraryVersion"), "2.1.2.17");
    EXPECT_EQ(instance.at("moduleVersion"), 0x00010002);
    EXPECT_EQ(instance.at("load"), 3.4);
    EXPECT_EQ(instance.at("sent"), (Json{{"bytes", 100}, {"clockStart", 5}, {"clockEnd", Json()}}));
    EXPECT_EQ(instance.at("received"), (Json{{"bytes", Json()}, {"clockStart", Json()}, {"clockEnd", 6}}));
    EXPECT_EQ(instance.at("presetBytesSent"), 9);
    EXPECT_EQ(instance.at("engineStarts"), 3);
    EXPECT_EQ(instance.at("engineStartMs"), 12);
    EXPECT_EQ(instance.at("engineStartBytes"), 13);
    EXPECT_EQ(instance.at("cycleCount"), 14);
    EXPECT_EQ(instance.at("frameCount"), 15);
    EXPECT_EQ(instance.at("writeTime"), 16);
    EXPECT_EQ(instance.at("meters").at("input"), (Json{0.5, 0.25, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(instance.at("meters").at("dspInput"), Json());
    EXPECT_TRUE(instance.at("malformed").empty());
}

TEST_F(MonitorOnce, NamesTheEndpointThatTheRegistryKnows) {
    const SeededEndpoint endpoint;
    RegistryKey properties;
    ASSERT_EQ(endpoint.key().create("Properties", platform::RegistryAccess::readWrite, properties), 0);
    const std::u16string name = u"Loud one";
    setBytes(properties, "{a45c254e-df1c-4efd-8020-67d146a850e0},14", types::string,
             std::as_bytes(std::span(name.c_str(), name.size() + 1)));
    setNarrow(makeLive(instanceName(1)), "EndpointIdStrW", endpoint.id());
    EXPECT_EQ(onlyInstance().at("endpoint"), (Json{{"id", endpoint.id()}, {"name", "Loud one"}}));
}

TEST_F(MonitorOnce, AnEmptyKeyIsAnInstanceOfWhichNothingIsKnown) {
    static_cast<void>(makeLive(instanceName(1)));
    const Json instance = onlyInstance();
    EXPECT_EQ(instance.at("effect"), Json());
    EXPECT_EQ(instance.at("load"), Json());
    EXPECT_TRUE(instance.at("malformed").empty());
}

TEST_F(MonitorOnce, ValuesOfWrongTypesAndSizesAreQuestionMarks) {
    const RegistryKey key = makeLive(instanceName(1));
    const std::array<std::byte, 31> bytes{};
    setBytes(key, "InputLevelMeters", types::binary, bytes);
    setBytes(key, "CPUUsage", types::dword, std::span(bytes).first(3));
    setBytes(key, "APOTypeStr", types::binary, std::span(bytes).first(4));
    setBytes(key, "EndpointIdStrW", types::string, {});
    setNumber(key, "ModuleVersion", 1);
    EXPECT_EQ(onlyInstance().at("malformed"),
              (Json{"APOTypeStr", "EndpointIdStrW", "CPUUsage", "ModuleVersion", "InputLevelMeters"}));
    const std::string table = monitor({"--once", "--interval", "10"}).output;
    EXPECT_NE(table.find("}  ?       ?         - ch -"), std::string::npos) << table;
}

TEST_F(MonitorOnce, ControlCharactersOfTextsReachNoTerminal) {
    setNarrow(makeLive(instanceName(1)), "EndpointIdStrW", "a\x1b[2Jb\nc\xff");
    const std::string table = monitor({"--once", "--interval", "10"}).output;
    EXPECT_NE(table.find("a\\x1B[2Jb\\x0Ac?"), std::string::npos) << table;
}

TEST_F(MonitorOnce, JsonHasAPlaceholderForBytesThatAreNoText) {
    setNarrow(makeLive(instanceName(1)), "EndpointIdStrW", "a\xff");
    EXPECT_EQ(onlyInstance().at("endpoint").at("id"), "a\xEF\xBF\xBD");
}

TEST_F(MonitorOnce, OneInstanceIsFoundWithOrWithoutBracesInAnyCase) {
    setTypicalValues(makeLive(instanceName(1)));
    setTypicalValues(makeLive(instanceName(2)));
    for (const char* const text :
         {"{6dcc1ac8-4a3c-4a98-a3a7-000000000002}", "6DCC1AC8-4A3C-4A98-A3A7-000000000002"}) {
        const Json shown = json({"--instance", text});
        ASSERT_EQ(shown.at("instances").size(), 1);
        EXPECT_EQ(shown.at("instances").at(0).at("instance"), instanceName(2));
    }
    EXPECT_EQ(json().at("instances").size(), 2);
}

TEST_F(MonitorOnce, OneInstanceIsShownWithAllThatIsKnownOfIt) {
    setTypicalValues(makeLive(instanceName(1)));
    const std::string text = monitor({"--interval", "10", "--instance", instanceName(1)}).output;
    EXPECT_NE(text.find("\nEngine starts  3, last at - of its process, -\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\nfront right          -12.0       -26.0           -           -\n"),
              std::string::npos)
        << text;
}

TEST_F(MonitorOnce, RefusesWhatIsNoInstance) {
    makeTelemetry();
    makeStale(instanceName(3));
    EXPECT_TRUE(
        failedWith(monitor({"--once", "--instance", "6dcc1ac8"}), {"--instance takes a GUID", "'6dcc1ac8'"}));
    EXPECT_TRUE(
        failedWith(monitor({"--once", "--instance", instanceName(9)}), {"no instance " + instanceName(9)}));
    EXPECT_TRUE(
        failedWith(monitor({"--once", "--instance", instanceName(3)}), {"its process died", "--stale"}));
}

TEST_F(MonitorOnce, RefusesIntervalsPastTheBounds) {
    for (const char* const interval : {"9", "60001", "-1", "x"}) {
        EXPECT_TRUE(failedWith(monitor({"--interval", interval}), {"--interval"}));
    }
}

TEST_F(MonitorOnce, AKeyThatIsALinkIsNamedAndSkipped) {
    setTypicalValues(makeLive(instanceName(1)));
    setNarrow(makeLive(instanceName(2)), "SymbolicLinkValue", "x");
    const Outcome outcome = monitor({"--once", "--interval", "10"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output.find(instanceName(2)), std::string::npos);
    EXPECT_NE(
        outcome.error.find("the instance " + instanceName(2) + " is skipped: the key points at another one"),
        std::string::npos);
    EXPECT_EQ(json().at("others"), (Json{{{"instance", instanceName(2)}, {"is", "link"}, {"code", 681}}}));
}

TEST_F(MonitorOnce, LeftOverKeysAreCountedAndNotShown) {
    makeStale(instanceName(1));
    const Outcome outcome = monitor({});
    EXPECT_EQ(outcome.output, "no live instance\n");
    EXPECT_EQ(outcome.error, "korva: 1 left-over key of processes that died; see korva monitor --stale\n");
}

TEST_F(MonitorOnce, KeysThatAreNamedByNoGuidInBracesAreNobodys) {
    static_cast<void>(makeKey("somebody's"));
    static_cast<void>(makeKey("6dcc1ac8-4a3c-4a98-a3a7-000000000001"));
    EXPECT_EQ(json().at("others"), Json::array());
}

TEST_F(MonitorOnce, ShowsWhatWasMeasuredWhileItAskedAndTurnsMeteringOff) {
    const RegistryKey key = makeLive(instanceName(1));
    const AnsweringObject object(key);
    EXPECT_NE(onlyInstance().at("meters").at("input").at(1), 0.0);
    EXPECT_EQ(numberOf(key, "CaptureLevelMeters"), 0);
    EXPECT_NE(numberOf(key, "CaptureDSPCycleCount"), 0);
}

TEST_F(MonitorOnce, AReadOnlyRegistryIsShownAndCannotBeAsked) {
    setTypicalValues(makeLive(instanceName(1)));
    ASSERT_EQ(chmod(registryPath().c_str(), 0444), 0);
    Launch launch = monitorLaunch({"--once", "--json", "--interval", "10"});
    launch.obeysPermissions = true;
    const Outcome outcome = run(launch);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(Json::parse(outcome.output).at("instances").at(0).at("effect"), "MFX");
    EXPECT_NE(outcome.error.find("instances can't be asked: no right to do so"), std::string::npos)
        << outcome.error;
}

TEST_F(MonitorOnce, AFullRegistryIsShownAndCannotBeAsked) {
    const RegistryKey key = makeLive(instanceName(1));
    setTypicalValues(key);
    Launch launch = monitorLaunch({"--once", "--json", "--interval", "10"});
    launch.fileSizeLimit = 1;
    const Outcome outcome = run(launch);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(Json::parse(outcome.output).at("instances").at(0).at("effect"), "MFX");
    EXPECT_NE(outcome.error.find("instances can't be asked: "), std::string::npos) << outcome.error;
    EXPECT_EQ(numberOf(key, "CaptureLevelMeters"), 0);
}

TEST_F(MonitorOnce, ARegistryThatCannotBeReadIsAnError) {
    writeBytes(path("no registry"), "something else, long enough to be taken for a file of any kind");
    Launch launch = monitorLaunch({"--once"});
    launch.environment["KORVA_REGISTRY"] = path("no registry");
    EXPECT_TRUE(failedWith(run(launch), {"cannot look for instances", "is no registry"}));
}

TEST_F(MonitorOnce, RefusesOptionsThatDontGoTogether) {
    EXPECT_TRUE(failedWith(monitor({"--once", "--stale"}), {"--stale"}));
    EXPECT_TRUE(failedWith(monitor({"--stale", "--sweep"}), {"--s"}));
    EXPECT_TRUE(failedWith(monitor({"--yes"}), {"--sweep"}));
    EXPECT_TRUE(failedWith(monitor({"--once", "--request", "DSPCycleCount"}), {"--"}));
}

TEST_F(MonitorOnce, HelpTellsWhatAPipeGets) {
    const Outcome outcome = monitor({"--help"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(outcome.output.find("else, as with --once, one table"), std::string::npos);
}

}  // namespace
}  // namespace korva::test
