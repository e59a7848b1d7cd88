// The registry's file, what a registration wrote there, and the keys of instances.
#include <sqlite3.h>
#include <sys/stat.h>

#include "tests/cli/doctor/linux/doctor_test.h"
#include "tests/platform/linux/raw_file.h"

namespace korva::test {
namespace {

class DoctorRegistry : public DoctorTest {};

TEST_F(DoctorRegistry, ThatIsNoneCannotBeLookedAt) {
    writeBytes(path("garbage"), std::string(5000, 'x'));
    Launch launch = launchOf({"doctor", "--library", library});
    launch.environment["KORVA_REGISTRY"] = path("garbage");
    EXPECT_TRUE(failedWith(run(launch), {path("garbage"), "is no registry"}));
    launch.environment["KORVA_REGISTRY"] = folder.string();
    EXPECT_TRUE(failedWith(run(launch), {folder.string()}));
}

TEST_F(DoctorRegistry, OfANewerVersionCannotBeLookedAt) {
    RawFile(registryPath()).run("PRAGMA user_version = 2");
    EXPECT_TRUE(failedWith(doctor(), {registryPath(), "newer version"}));
}

TEST_F(DoctorRegistry, ThatIsDamagedIsTheOnlyFault) {
    RawFile(registryPath()).run("PRAGMA wal_checkpoint(TRUNCATE)");
    std::string bytes = readBytes(registryPath());
    ASSERT_GT(bytes.size(), 3u * 4096);
    bytes.resize(3 * 4096);
    writeBytes(registryPath(), bytes);
    EXPECT_TRUE(findsOnly("registry", {"is damaged", "The check of the file says"}));
    EXPECT_NE(doctor().output.find("skipped: endpoints\n"), std::string::npos);
}

TEST_F(DoctorRegistry, ThatMayNotBeWrittenIsAFault) {
    ASSERT_EQ(chmod(registryPath().c_str(), 0444), 0);
    Launch launch = launchOf({"doctor", "--library", library});
    launch.obeysPermissions = true;
    const Outcome outcome = run(launch);
    EXPECT_EQ(outcome.exitCode, 1) << outcome.error;
    EXPECT_NE(outcome.output.find("fault: The registry '" + registryPath() + "' can't be written."),
              std::string::npos)
        << outcome.output;
    EXPECT_NE(outcome.output.find("  remedy: chmod u+rw " + registryPath() + "\n"), std::string::npos);
}

TEST_F(DoctorRegistry, WithoutARegistrationSaysSoOnce) {
    done({"unregister", "--library", library});
    EXPECT_TRUE(findsOnly("registration", {"is not registered", "korva register --library " + library}));
}

TEST_F(DoctorRegistry, WithoutAnyClassesStaysWithoutThem) {
    std::filesystem::remove(registryPath());
    quietly({"create", telemetryKey});
    const std::string before = exported("HKLM");
    EXPECT_TRUE(findsOnly("registration", {"is not registered"}));
    EXPECT_EQ(exported("HKLM"), before);
}

TEST_F(DoctorRegistry, ARegistrationThatLacksAValueIsAFault) {
    const std::string key = "HKCR\\CLSID\\{C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}\\InprocServer32";
    quietly({"delete", key, "ThreadingModel"});
    EXPECT_TRUE(findsOnly("registration", {"InprocServer32", "It lacks 'ThreadingModel'."}));
    quietly({"set", key, "ThreadingModel", "dword", "1"});
    EXPECT_TRUE(findsOnly("registration", {"'ThreadingModel' is not what a registration writes."}));
    done({"register", "--library", library});
    EXPECT_TRUE(findsNothing());
}

TEST_F(DoctorRegistry, ARegistrationOfALibraryThatIsGoneIsAFault) {
    std::filesystem::copy_file(library, path("moved.so"));
    done({"register", "--library", path("moved.so")});
    EXPECT_TRUE(findsOnly("registration", {path("moved.so"), "Another library was registered"}));
    std::filesystem::remove(path("moved.so"));
    EXPECT_TRUE(findsOnly("registration", {path("moved.so"), "There is no such file"}));
}

TEST_F(DoctorRegistry, WithoutTheKeyOfTelemetryHasTheRemedyAtHand) {
    quietly({"delete", telemetryKey});
    EXPECT_TRUE(findsOnly("telemetry", {"korva registry create \"HKLM\\Software\\Kestrelwright\""}));
    quietly({"create", telemetryKey});
    EXPECT_TRUE(findsNothing());
}

TEST_F(DoctorRegistry, LinksInThePlaceOfTelemetryAreFaults) {
    for (const char* const key : {telemetryKey, "HKLM\\Software\\Kestrelwright\\APO\\Instances"}) {
        quietly({"set", key, "SymbolicLinkValue", "sz", "elsewhere"});
        EXPECT_TRUE(findsOnly("telemetry", {"points at another one", "korva registry delete"})) << key;
        quietly({"delete", key});
        quietly({"create", key});
        EXPECT_TRUE(findsNothing()) << key;
    }
}

TEST_F(DoctorRegistry, KeysThatDeadProcessesLeftAreOneFault) {
    const std::string instances = std::string(telemetryKey) + "\\APO\\Instances\\";
    quietly({"create", instances + "{6dcc1ac8-4a3c-4a98-a3a7-000000000001}"});
    EXPECT_TRUE(findsOnly("instances", {"An audio object left its key behind", "korva monitor --sweep"}));
    quietly({"create", instances + "{6dcc1ac8-4a3c-4a98-a3a7-000000000002}"});
    EXPECT_TRUE(findsOnly("instances", {"2 audio objects"}));
    done({"monitor", "--sweep", "--yes"});
    EXPECT_TRUE(findsNothing());
}

}  // namespace
}  // namespace korva::test
