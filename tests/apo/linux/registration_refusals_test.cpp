#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "apo/effect_class.h"
#include "apo/registration/apo_registration.h"
#include "platform/published/results.h"
#include "platform/registry_values.h"
#include "tests/apo/server_registration_test.h"
#include "tests/support/environment.h"
#include "tests/support/own_folder.h"

namespace korva::apo {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;

constexpr HRESULT isLink = platform::hresultOf(platform::registry_result::isLink);

/// A place that a step writes to, and what comes of it when it points elsewhere and the step is taken back.
struct Refusal {
    const char* step;
    std::string place;
    HRESULT undone;
};

class ServerRegistrationWithALink : public ServerRegistration, public testing::WithParamInterface<Refusal> {};

TEST_P(ServerRegistrationWithALink, TakesBackAllThatCameBefore) {
    const Refusal& refusal = GetParam();
    putOthers(refusal.place, "SymbolicLinkValue");

    EXPECT_EQ(registerServer(), isLink);

    EXPECT_EQ(unregisterServer(), refusal.undone);
    static_cast<void>(RegistryKey::root(classesRoot).deleteTree(refusal.place));
    for (const std::string& line : test::treeLines(classesRoot, "")) {
        EXPECT_TRUE(line == "AudioEngine" || line == "AppID" || line == "CLSID" || line == "TypeLib") << line;
    }
}

// The type library's key goes whole, wherever it points.
INSTANTIATE_TEST_SUITE_P(OfEachStep, ServerRegistrationWithALink,
                         testing::Values(Refusal{"Objects", "AudioEngine\\AudioProcessingObjects", isLink},
                                         Refusal{"Application", "AppID", isLink},
                                         Refusal{"Classes", "CLSID", isLink},
                                         Refusal{"TypeLibrary",
                                                 "TypeLib\\{48E3D58C-375D-4140-8990-8907E4F9418F}\\1.0",
                                                 published::ok}),
                         [](const auto& shown) { return std::string(shown.param.step); });

TEST(ServerRegistrationFile, IsToldOfWhereThereIsNoRegistry) {
    const test::OwnFolder folder;
    const test::EnvironmentVariable registry("KORVA_REGISTRY", folder.path().string());

    EXPECT_TRUE(published::failed(registerServer()));
    EXPECT_TRUE(published::failed(unregisterServer()));
    EXPECT_TRUE(published::failed(RegisterAPO(&modeEffect.record)));
    EXPECT_TRUE(published::failed(UnregisterAPO(modeEffect.record.clsid)));
}

TEST(ApoRegistrationOrder, IsThatOfTheList) {
    const test::OwnRegistry own;
    ASSERT_EQ(RegisterAPO(&streamEffect.record), published::ok);

    RegistryKey key;
    ASSERT_EQ(RegistryKey::root(classesRoot)
                  .open("AudioEngine\\AudioProcessingObjects\\{F71CA881-A2E0-43D1-9B8D-CEF14AA0D58D}",
                        RegistryAccess::read, key),
              0);
    EXPECT_EQ(test::valueNamesOf(key),
              (Lines{"FriendlyName", "Copyright", "MajorVersion", "MinorVersion", "Flags",
                     "MinInputConnections", "MaxInputConnections", "MinOutputConnections",
                     "MaxOutputConnections", "MaxInstances", "NumAPOInterfaces", "APOInterface0"}));
}

TEST(ServerRegistrationTree, IsAllThatIsWritten) {
    const test::OwnRegistry own;
    ASSERT_EQ(registerServer(), published::ok);
    // The list with three objects of twelve values, the application, the classes, the type library.
    EXPECT_EQ(test::treeLines(classesRoot, "").size(), 2U + 3 * 13 + 5 + 1 + 3 * 5 + 11);

    ASSERT_EQ(unregisterServer(), published::ok);
    EXPECT_EQ(test::treeLines(classesRoot, ""), (Lines{"AppID", "CLSID", "TypeLib"}));
}

}  // namespace
}  // namespace korva::apo
