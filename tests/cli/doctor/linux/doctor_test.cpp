#include "tests/cli/doctor/linux/doctor_test.h"

#include <algorithm>
#include <filesystem>
#include <utility>

namespace korva::test {
namespace {

namespace files = std::filesystem;
using Json = nlohmann::json;

constexpr const char* preset = R"({"engine": "{c9f475bc-13e4-6150-ae88-790995afc7c1}", "presetVersion": 1,
    "hardware": false, "parameters": []})";

testing::AssertionResult unexpected(const Outcome& outcome) {
    return testing::AssertionFailure()
           << "exit code " << outcome.exitCode << ", signal " << outcome.signal
           << "\nstandard output: " << outcome.output << "\nstandard error: " << outcome.error;
}

std::string sentencesOf(const Json& finding) {
    return finding["what"].get<std::string>() + "\n" + finding["cause"].get<std::string>() + "\n" +
           finding["remedy"].get<std::string>();
}

}  // namespace

DoctorTest::DoctorTest() {
    files::copy_file(KORVA_LIBRARY, library);
    putModule("lacking_nothing");
    done({"register", "--library", library});
    const std::string told = done({"endpoint", "add", "Speakers"});
    const std::size_t last = told.rfind('\n', told.size() - 2) + 1;
    endpoint = told.substr(last, told.size() - last - 1);
    writeBytes(path("preset.json"), preset);
    done({"preset", "install", path("preset.json"), "--endpoint", endpoint, "--effect", "mfx"});
}

Launch DoctorTest::launchOf(std::vector<std::string> arguments) const {
    Launch launch = tool(std::move(arguments));
    launch.environment["KORVA_REGISTRY"] = registryPath();
    launch.environment["KORVA_KERNELS"] = "";
    return launch;
}

std::string DoctorTest::done(std::vector<std::string> arguments) const {
    const Outcome outcome = run(launchOf(std::move(arguments)));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    return outcome.output;
}

Outcome DoctorTest::doctor(std::vector<std::string> options) const {
    options.insert(options.begin(), {"doctor", "--library", library});
    return run(launchOf(std::move(options)));
}

testing::AssertionResult DoctorTest::findsOnly(const std::string& subject,
                                               const std::vector<std::string>& parts) const {
    const Outcome outcome = doctor({"--json"});
    const Json report = Json::parse(outcome.output, nullptr, false);
    if (outcome.exitCode != 1 || !outcome.error.empty() || report.is_discarded() || report["faults"] != 1) {
        return unexpected(outcome);
    }
    const auto fault = std::ranges::find_if(
        report["findings"], [](const Json& finding) { return finding["severity"] == "fault"; });
    const std::string told = sentencesOf(*fault);
    const bool isComplete =
        std::ranges::all_of(parts, [&](const std::string& part) { return told.find(part) != told.npos; });
    return (*fault)["subject"] == subject && isComplete ? testing::AssertionSuccess() : unexpected(outcome);
}

testing::AssertionResult DoctorTest::findsNothing() const {
    const Outcome outcome = doctor();
    return outcome.exitCode == 0 && outcome.error.empty() && outcome.output.ends_with("\nno fault\n")
               ? testing::AssertionSuccess()
               : unexpected(outcome);
}

std::string DoctorTest::setKey(const std::string& set) const {
    return "HKLM\\Software\\Veltrane\\APO\\" + endpoint + "\\FxProperties\\" + set;
}

std::string DoctorTest::property(unsigned pid) {
    return "{c26ad82e-b1cb-4bdf-87e9-cacd7fd6c6fd}," + std::to_string(pid);
}

void DoctorTest::putModule(const std::string& name) const {
    files::copy_file(std::string(KORVA_TEST_MODULES) + "/" + name + ".so", module,
                     files::copy_options::overwrite_existing);
}

namespace {

TEST_F(DoctorTest, FindsNothingWhereAllIsWell) {
    const Outcome outcome = doctor();
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.error, "");
    for (const char* const subject :
         {"registry", "library", "registration", "endpoints", "telemetry", "instances"}) {
        EXPECT_NE(outcome.output.find(std::string("ok: ") + subject + "\n"), std::string::npos)
            << outcome.output;
    }
    EXPECT_EQ(outcome.output.find("fault:"), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, ChangesNothing) {
    const std::string before = exported("HKLM");
    const std::vector<std::string> names = namesIn(folder);
    EXPECT_EQ(doctor().exitCode, 0);
    EXPECT_EQ(exported("HKLM"), before);
    EXPECT_EQ(namesIn(folder), names);
}

TEST_F(DoctorTest, AsJsonTellsTheSame) {
    const Outcome outcome = doctor({"--json"});
    EXPECT_EQ(outcome.exitCode, 0);
    const Json report = Json::parse(outcome.output);
    EXPECT_EQ(report["faults"], 0);
    EXPECT_TRUE(report["findings"].is_array());
}

TEST_F(DoctorTest, TakesTheLibraryBesideTheTool) {
    const Outcome outcome = run(launchOf({"doctor"}));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.output.find("Hosts load '" + library + "' in place of this library."),
              std::string::npos)
        << outcome.output;
    EXPECT_NE(outcome.output.find("  remedy: korva register\n"), std::string::npos) << outcome.output;
}

TEST_F(DoctorTest, RefusesWhatItDoesNotKnow) {
    EXPECT_TRUE(failedWith(run(launchOf({"doctor", "--library", ""})), {"--library takes a file, not ''"}));
    EXPECT_TRUE(failedWith(run(launchOf({"doctor", "words"})), {"unexpected argument 'words'"}));
    EXPECT_EQ(run(launchOf({"doctor", "--colour"})).exitCode, 2);
}

TEST_F(DoctorTest, MakesNoRegistryWhereThereIsNone) {
    Launch launch = launchOf({"doctor", "--library", library, "--json"});
    launch.environment["KORVA_REGISTRY"] = path("none/registry");
    const Outcome outcome = run(launch);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(Json::parse(outcome.output)["findings"][0]["subject"], "registry");
    EXPECT_EQ(Json::parse(outcome.output)["faults"], 1);
    EXPECT_FALSE(files::exists(path("none")));
}

}  // namespace
}  // namespace korva::test
