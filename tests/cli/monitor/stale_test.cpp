#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "korva/monitor/instance_keys.h"
#include "tests/cli/monitor/monitor_test.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;

TEST(MonitorNames, AreGuidsInBracesAndLowerCase) {
    const std::string name = instanceName(1);
    EXPECT_EQ(tool::instanceNameOf(name), name);
    EXPECT_EQ(tool::instanceNameOf("6DCC1AC8-4a3c-4A98-A3A7-000000000001"), name);
    for (const char* const other :
         {"", "{}", "{6dcc1ac8-4a3c-4a98-a3a7-000000000001", "6dcc1ac8-4a3c-4a98-a3a7-000000000001}",
          "6dcc1ac84a3c4a98a3a7000000000001", "6dcc1ac8-4a3c-4a98-a3a7-00000000000g",
          "6dcc1ac8-4a3c-4a98-a3a7-0000000000011", "{6dcc1ac8-4a3c-4a98-a3a7-000000000001} "}) {
        EXPECT_EQ(tool::instanceNameOf(other), std::nullopt) << other;
    }
}

class MonitorStale : public MonitorTest {};

TEST_F(MonitorStale, ListsKeysOfKilledProcessesOnly) {
    setTypicalValues(makeLive(instanceName(1)));
    EXPECT_EQ(monitor({"--stale"}).output, "no left-over key\n");
    makeStale(instanceName(2));
    const Outcome outcome = monitor({"--stale"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.output,
              instanceName(2) + "  MFX     {0.0.0.00000000}.{e892327f-d50d-4004-bb6a-491ea775236e}\n");
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(Json::parse(monitor({"--stale", "--json"}).output),
              (Json{{"stale",
                     {{{"instance", instanceName(2)},
                       {"effect", "MFX"},
                       {"endpoint", "{0.0.0.00000000}.{e892327f-d50d-4004-bb6a-491ea775236e}"}}}}}));
}

TEST_F(MonitorStale, AKeyWithoutAMutexAtAllIsLeftOver) {
    static_cast<void>(makeKey(instanceName(1)));
    EXPECT_EQ(monitor({"--stale"}).output, instanceName(1) + "  -       -\n");
}

TEST_F(MonitorStale, SweepNeedsAWordWhereNobodyCanBeAsked) {
    makeStale(instanceName(2));
    EXPECT_TRUE(failedWith(monitor({"--sweep"}), {"asks before it removes 1 left-over key;", "--yes"}));
    EXPECT_TRUE(hasKey(instanceName(2)));
}

TEST_F(MonitorStale, SweepRemovesTheTreeAndTheMutexAndNothingThatLives) {
    setTypicalValues(makeLive(instanceName(1)));
    makeStale(instanceName(2));
    static_cast<void>(makeKey(instanceName(2) + "\\below"));
    static_cast<void>(makeKey("somebody's"));
    const std::string lock = registryPath() + ".run/Global_" + instanceName(2) + ".lock";
    ASSERT_TRUE(std::filesystem::exists(lock));
    const Outcome outcome = monitor({"--sweep", "--yes"});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "removed " + instanceName(2) + "\n");
    EXPECT_FALSE(hasKey(instanceName(2)));
    EXPECT_TRUE(hasKey(instanceName(1)));
    EXPECT_TRUE(hasKey("somebody's"));
    EXPECT_FALSE(std::filesystem::exists(lock));
    EXPECT_EQ(monitor({"--sweep"}).output, "no left-over key\n");
}

TEST_F(MonitorStale, SweepOfOneLeavesTheOthers) {
    makeStale(instanceName(2));
    makeStale(instanceName(3));
    const Outcome outcome = monitor({"--sweep", "--yes", "--json", "--instance", instanceName(3)});
    EXPECT_EQ(Json::parse(outcome.output), (Json{{"removed", {instanceName(3)}}}));
    EXPECT_TRUE(hasKey(instanceName(2)));
    EXPECT_FALSE(hasKey(instanceName(3)));
}

TEST_F(MonitorStale, AKeyThatTurnsOutToBeLiveStays) {
    setTypicalValues(makeLive(instanceName(1)));
    platform::RegistryResult code = 0;
    EXPECT_EQ(tool::removeStaleInstance(instanceName(1), code), tool::Removal::isLive);
    EXPECT_TRUE(hasKey(instanceName(1)));
}

TEST_F(MonitorStale, AKeyInCapitalsGoesWithTheMutexThatItsObjectHad) {
    makeStale(instanceName(2));
    const std::filesystem::path lock = registryPath() + ".run/Global_" + instanceName(2) + ".lock";
    ASSERT_TRUE(std::filesystem::exists(lock));
    platform::RegistryResult code = 0;
    EXPECT_EQ(tool::removeStaleInstance("{6DCC1AC8-4A3C-4A98-A3A7-000000000002}", code),
              tool::Removal::removed);
    EXPECT_FALSE(std::filesystem::exists(lock));
}

TEST_F(MonitorStale, AKeyThatIsALinkStays) {
    setNarrow(makeKey(instanceName(1)), "SymbolicLinkValue", "x");
    platform::RegistryResult code = 0;
    EXPECT_EQ(tool::removeStaleInstance(instanceName(1), code), tool::Removal::isLink);
    EXPECT_EQ(monitor({"--sweep", "--yes"}).output, "no left-over key\n");
}

TEST_F(MonitorStale, AKeyThatIsGoneMeanwhileIsNoFailure) {
    makeTelemetry();
    platform::RegistryResult code = 0;
    EXPECT_EQ(tool::removeStaleInstance(instanceName(1), code), tool::Removal::gone);
}

TEST_F(MonitorStale, SweepFailsWhereTheRegistryCannotBeWritten) {
    makeStale(instanceName(2));
    ASSERT_EQ(chmod(registryPath().c_str(), 0444), 0);
    Launch launch = monitorLaunch({"--sweep", "--yes"});
    launch.obeysPermissions = true;
    EXPECT_TRUE(failedWith(run(launch), {"cannot remove a left-over key"}));
    EXPECT_TRUE(hasKey(instanceName(2)));
}

}  // namespace
}  // namespace korva::test
