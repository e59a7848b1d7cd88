#include "tests/apo/server_registration_test.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "apo/effect_class.h"
#include "platform/module_library.h"
#include "platform/property_key.h"
#include "platform/published/results.h"
#include "platform/registry_values.h"

namespace korva::apo {
namespace {

using platform::RegistryKey;
using test::hasKey;
using test::treeLines;
using test::valueAt;

std::string quoted(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return "'" + std::string(text.begin(), text.end()) + "'";
}

std::string classKey(const EffectClass& effect) {
    return "CLSID\\" + platform::upperGuidText(effect.record.clsid);
}

TEST_F(ServerRegistration, PutsTheClassesIntoTheirPlace) {
    ASSERT_EQ(registerServer(), published::ok);

    const std::string library = quoted(platform::ownLibraryPath());
    const auto linesOf = [&](const std::string& text) {
        return Lines{" @ = '" + text + "'", "InprocServer32", "InprocServer32 @ = " + library,
                     "InprocServer32 @ThreadingModel = 'Both'"};
    };
    EXPECT_EQ(treeLines(classesRoot, classKey(modeEffect)), linesOf("KORVAGFX Class"));
    EXPECT_EQ(treeLines(classesRoot, classKey(streamEffect)), linesOf("KORVALFX Class"));
    EXPECT_EQ(treeLines(classesRoot, classKey(endpointEffect)), linesOf("KORVAEFX Class"));
}

TEST_F(ServerRegistration, PutsTheObjectsOnTheEnginesList) {
    ASSERT_EQ(registerServer(), published::ok);

    for (const EffectClass* const effect : effectClasses) {
        const std::string place =
            "AudioEngine\\AudioProcessingObjects\\" + platform::upperGuidText(effect->record.clsid);
        EXPECT_EQ(valueAt(classesRoot, place, "FriendlyName"),
                  "'" + platform::toUtf8(effect->record.szFriendlyName) + "'");
        EXPECT_EQ(valueAt(classesRoot, place, "Flags"), std::to_string(effect->record.Flags));
        EXPECT_EQ(valueAt(classesRoot, place, "APOInterface0"),
                  "'" + platform::upperGuidText(effect->ownInterface()) + "'");
    }
}

TEST_F(ServerRegistration, WritesTheValuesThatItIsSaidToWrite) {
    ASSERT_EQ(registerServer(), published::ok);

    const auto expected = serverValues(platform::ownLibraryPath());
    for (const platform::RegistryChange& value : expected) {
        RegistryKey key;
        platform::RegistryValue written;
        EXPECT_EQ(RegistryKey::root(value.root).open(value.path, platform::RegistryAccess::read, key), 0)
            << value.path;
        EXPECT_EQ(key.readValue(value.name, written), 0) << value.path << ' ' << value.name;
        EXPECT_EQ(written.type, value.value.type) << value.path << ' ' << value.name;
        EXPECT_EQ(written.data, value.value.data) << value.path << ' ' << value.name;
    }
    // For each class 12 of its object and 3 of its class; 2 of the application, and the type library's file.
    EXPECT_EQ(expected.size(), 3u * (12 + 3) + 2 + 1);
}

TEST_F(ServerRegistration, MakesTheLibraryAnApplication) {
    ASSERT_EQ(registerServer(), published::ok);

    EXPECT_EQ(treeLines(classesRoot, "AppID\\{0A21D954-674A-4C09-806E-DB4FBE8F199C}"), Lines{" @ = 'KORVA'"});
    EXPECT_EQ(treeLines(classesRoot, "AppID\\KORVA.DLL"),
              Lines{" @AppID = '{0A21D954-674A-4C09-806E-DB4FBE8F199C}'"});
}

TEST_F(ServerRegistration, TellsWhereTheTypeLibraryIs) {
    ASSERT_EQ(registerServer(), published::ok);

    const std::string version = "TypeLib\\{48E3D58C-375D-4140-8990-8907E4F9418F}\\1.0";
    EXPECT_EQ(valueAt(classesRoot, version, ""), "'KORVA 1.0 Type Library'");
    EXPECT_EQ(valueAt(classesRoot, version + "\\0\\win64", ""), quoted(platform::ownLibraryPath()));
    EXPECT_EQ(valueAt(classesRoot, version + "\\HELPDIR", ""), quoted(platform::ownLibraryFolder()));
}

TEST_F(ServerRegistration, WritesTheSameTheSecondTime) {
    ASSERT_EQ(registerServer(), published::ok);
    ASSERT_EQ(serverKeysThere(), serverKeys);
    const Lines once = serverLines();

    EXPECT_EQ(registerServer(), published::ok);
    EXPECT_EQ(serverLines(), once);
}

TEST_F(ServerRegistration, LeavesNothingBehind) {
    const bool hadEngine = hasKey(classesRoot, "AudioEngine");
    ASSERT_EQ(registerServer(), published::ok);

    EXPECT_EQ(unregisterServer(), published::ok);

    EXPECT_EQ(serverKeysThere(), Lines{});
    EXPECT_EQ(hasKey(classesRoot, "AudioEngine"), hadEngine);
}

TEST_F(ServerRegistration, IsTakenBackWhereNothingIsThere) {
    EXPECT_EQ(unregisterServer(), published::ok);

    ASSERT_EQ(registerServer(), published::ok);
    EXPECT_EQ(unregisterServer(), published::ok);
    EXPECT_EQ(unregisterServer(), published::ok);
}

TEST_F(ServerRegistration, IsTakenBackWhereAPartOfItIsMissing) {
    for (const std::string& missing : serverKeys) {
        ASSERT_EQ(registerServer(), published::ok);
        ASSERT_EQ(RegistryKey::root(classesRoot).deleteTree(missing), 0);

        EXPECT_EQ(unregisterServer(), published::ok) << missing;
        EXPECT_EQ(serverKeysThere(), Lines{}) << missing;
    }
}

TEST_F(ServerRegistration, LeavesWhatOthersHavePutBesideIt) {
    ASSERT_EQ(registerServer(), published::ok);
    const std::vector<std::string> others = {
        "AudioEngine\\AudioProcessingObjects\\{0D9C4C3C-61B4-4E0C-9C5E-6C7B8C0A6E11}",
        "AppID\\{0A21D954-674A-4C09-806E-DB4FBE8F199C}",
        "TypeLib\\{48E3D58C-375D-4140-8990-8907E4F9418F}\\7.0",
    };
    for (const std::string& path : others) {
        putOthers(path, "theirs");
    }

    EXPECT_EQ(unregisterServer(), published::ok);

    for (const std::string& path : others) {
        EXPECT_EQ(valueAt(classesRoot, path, "theirs"), "1") << path;
        EXPECT_EQ(RegistryKey::root(classesRoot).deleteTree(path), 0);
    }
    EXPECT_EQ(RegistryKey::root(classesRoot).deleteTree("AudioEngine"), 0);
    EXPECT_EQ(RegistryKey::root(classesRoot).deleteTree("TypeLib\\{48E3D58C-375D-4140-8990-8907E4F9418F}"),
              0);
}

TEST_F(ServerRegistration, TakesBackWhatItHasWrittenWhenItFails) {
    const std::string application = "AppID\\{0A21D954-674A-4C09-806E-DB4FBE8F199C}";
    putOthers(application, "SymbolicLinkValue");

    EXPECT_EQ(registerServer(), platform::hresultOf(platform::registry_result::isLink));

    EXPECT_EQ(serverKeysThere(), Lines{});
    EXPECT_FALSE(hasKey(classesRoot, "AudioEngine"));
    EXPECT_EQ(RegistryKey::root(classesRoot).deleteTree(application), 0);
}

TEST_F(ServerRegistration, TakesBackTheRestWhenAPartFails) {
    const std::string application = "AppID\\{0A21D954-674A-4C09-806E-DB4FBE8F199C}";
    ASSERT_EQ(registerServer(), published::ok);
    putOthers(application, "SymbolicLinkValue");

    EXPECT_EQ(unregisterServer(), platform::hresultOf(platform::registry_result::isLink));

    EXPECT_EQ(serverKeysThere(), Lines{});
    EXPECT_EQ(RegistryKey::root(classesRoot).deleteTree(application), 0);
}

}  // namespace
}  // namespace korva::apo
