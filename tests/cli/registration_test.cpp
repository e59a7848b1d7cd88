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

TEST_F(Registration, TakesNoFurtherWords) {
    for (const char* const command : commands) {
        EXPECT_TRUE(failedWith(run(command, {"library.so"}), {"unexpected argument 'library.so'"}));
    }
}

}  // namespace
}  // namespace korva::test
