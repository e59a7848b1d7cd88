#include <nlohmann/json.hpp>

#include "tests/cli/registry_tool_test.h"

namespace korva::test {
namespace {

class Registration : public RegistryToolTest {
protected:
    [[nodiscard]] Outcome run(const char* command, std::vector<std::string> options) const {
        options.insert(options.begin(), command);
        Launch launch = tool(options);
        launch.environment["KORVA_REGISTRY"] = registryPath();
        return test::run(launch);
    }
};

/// Of the stream effect.
constexpr const char* classKey = "HKCR\\CLSID\\{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}";
constexpr const char* engineKey =
    "HKCR\\AudioEngine\\AudioProcessingObjects\\{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}";

constexpr std::initializer_list<const char*> commands = {"register", "unregister"};

TEST_F(Registration, OfALibraryThatIsMissingOrNoneNamesIt) {
    writeBytes(path("text"), "no library");
    for (const char* const command : commands) {
        EXPECT_TRUE(failedWith(run(command, {"--library", path("none.so")}),
                               {"there is no library", path("none.so")}));
        EXPECT_TRUE(failedWith(run(command, {"--library", path("text")}), {path("text"), "can't be loaded"}));
        EXPECT_TRUE(failedWith(run(command, {"--library", ""}), {"--library takes a file, not ''"}));
    }
}

TEST_F(Registration, OfALibraryThatLacksTheExportNamesIt) {
    EXPECT_TRUE(failedWith(run("register", {"--library", KORVA_PLAYING_LIBRARY}),
                           {KORVA_PLAYING_LIBRARY, "DllRegisterServer"}));
    EXPECT_TRUE(failedWith(run("unregister", {"--library", KORVA_PLAYING_LIBRARY}),
                           {KORVA_PLAYING_LIBRARY, "DllUnregisterServer"}));
}

TEST_F(Registration, ThatIsRefusedTellsTheResult) {
    EXPECT_TRUE(failedWith(run("register", {"--library", KORVA_REFUSING_LIBRARY}),
                           {KORVA_REFUSING_LIBRARY, "can't register", "0x80070005, access denied"}));
    EXPECT_TRUE(failedWith(run("unregister", {"--library", KORVA_REFUSING_LIBRARY, "--json"}),
                           {KORVA_REFUSING_LIBRARY, "out of the registry", "0x8007000e, out of memory"}));
}

TEST_F(Registration, WritesTheClassesWhereEnginesFindThem) {
    const Outcome outcome = run("register", {});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "registered the classes of " KORVA_LIBRARY " in " + registryPath() + "\n");
    EXPECT_NE(output({"get", std::string(classKey) + "\\InprocServer32", ""}).find(KORVA_LIBRARY),
              std::string::npos);
    EXPECT_NE(output({"get", engineKey, "FriendlyName"}).find("KORVASFX"), std::string::npos);
}

TEST_F(Registration, IsTakenBackWithoutATrace) {
    EXPECT_EQ(run("register", {}).exitCode, 0);
    const Outcome outcome = run("unregister", {});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_EQ(outcome.output, "took the classes of " KORVA_LIBRARY " out of " + registryPath() + "\n");
    for (const char* const key : {classKey, engineKey}) {
        EXPECT_EQ(registry({"list", key}).exitCode, 2) << key;
    }
}

TEST_F(Registration, MayBeRepeated) {
    for (const char* const command : {"register", "register", "unregister"}) {
        EXPECT_EQ(run(command, {}).exitCode, 0) << command;
    }
}

TEST_F(Registration, TellsTheSameAsJson) {
    for (const bool registered : {true, false}) {
        const Outcome outcome = run(registered ? "register" : "unregister", {"--json"});
        const auto json = nlohmann::json::parse(outcome.output);
        EXPECT_EQ(json["library"], KORVA_LIBRARY);
        EXPECT_EQ(json["registry"], registryPath());
        EXPECT_EQ(json["registered"], registered);
    }
}

TEST_F(Registration, LeadsAHostToTheObject) {
    const auto played = [&](const char* effect) {
        Launch launch{.program = KORVA_HOST_PROGRAM, .arguments = {"--registered", "--class", effect}};
        launch.environment["KORVA_REGISTRY"] = registryPath();
        return test::run(launch);
    };
    const Outcome before = played("sfx");
    EXPECT_EQ(before.exitCode, 2);
    EXPECT_NE(before.error.find("0x80040154, the class is not registered"), std::string::npos)
        << before.error;
    EXPECT_EQ(run("register", {}).exitCode, 0);
    for (const char* const effect : {"sfx", "mfx", "efx"}) {
        const Outcome after = played(effect);
        EXPECT_EQ(after.exitCode, 0) << after.error;
        EXPECT_NE(after.output.find("\noutput 0.500000 0.500000\n"), std::string::npos) << after.output;
    }
    EXPECT_EQ(run("unregister", {}).exitCode, 0);
    EXPECT_EQ(played("sfx").exitCode, 2);
}

TEST_F(Registration, TakesNoFurtherWords) {
    for (const char* const command : commands) {
        EXPECT_TRUE(failedWith(run(command, {"library.so"}), {"unexpected argument 'library.so'"}));
    }
}

}  // namespace
}  // namespace korva::test
