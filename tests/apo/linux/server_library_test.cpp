#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/published/base_types.h"
#include "tests/support/loaded_library.h"
#include "tests/support/own_folder.h"
#include "tests/support/own_registry.h"
#include "tests/support/registry_tree.h"

namespace korva {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr auto classesRoot = platform::RegistryRoot::classesRoot;
const std::string modeEffect = "CLSID\\{C26AD82E-B1CB-4BDF-87E9-CACD7FD6C6FD}\\InprocServer32";
const std::string typeLibrary = "TypeLib\\{48E3D58C-375D-4140-8990-8907E4F9418F}\\1.0\\0\\win64";

/// The library as a host loads it, with a registry of the test's own.
class ServerLibrary : public testing::Test {
protected:
    static HRESULT call(const fs::path& path, const char* entry) {
        const test::LoadedLibrary library(path.string());
        return library.function<HRESULT()>(entry)();
    }

    test::OwnRegistry own;
};

TEST_F(ServerLibrary, RegistersTheFileThatItWasLoadedFrom) {
    EXPECT_EQ(call(KORVA_SERVER_LIBRARY, "DllRegisterServer"), 0);

    const std::string path = "'" + std::string(KORVA_SERVER_LIBRARY) + "'";
    EXPECT_EQ(test::valueAt(classesRoot, modeEffect, ""), path);
    EXPECT_EQ(test::valueAt(classesRoot, typeLibrary, ""), path);
}

TEST_F(ServerLibrary, RegistersAPathWithAnything) {
    const test::OwnFolder folder;
    const fs::path copy = folder.path() / "it's 100% \xC3\xA4 {%MODULE%}.so";
    fs::copy_file(KORVA_SERVER_LIBRARY, copy);

    EXPECT_EQ(call(copy, "DllRegisterServer"), 0);

    EXPECT_EQ(test::valueAt(classesRoot, modeEffect, ""), "'" + copy.string() + "'");
    EXPECT_EQ(test::valueAt(classesRoot, typeLibrary, ""), "'" + copy.string() + "'");
}

TEST_F(ServerLibrary, LeavesOnlyTheListsOfTheSystem) {
    ASSERT_EQ(call(KORVA_SERVER_LIBRARY, "DllRegisterServer"), 0);
    EXPECT_EQ(call(KORVA_SERVER_LIBRARY, "DllUnregisterServer"), 0);
    EXPECT_EQ(call(KORVA_SERVER_LIBRARY, "DllUnregisterServer"), 0);
    EXPECT_EQ(test::treeLines(classesRoot, ""), (Lines{"AppID", "CLSID", "TypeLib"}));
}

TEST_F(ServerLibrary, WritesNothingUnderAPathThatIsNoText) {
    const test::OwnFolder folder;
    const fs::path copy = folder.path() / "\xFF.so";
    fs::copy_file(KORVA_SERVER_LIBRARY, copy);

    EXPECT_LT(call(copy, "DllRegisterServer"), 0);

    EXPECT_EQ(test::treeLines(classesRoot, ""), Lines{});
}

TEST_F(ServerLibrary, GoesWithItsLastUser) {
    ASSERT_EQ(call(KORVA_SERVER_LIBRARY, "DllRegisterServer"), 0);
    EXPECT_FALSE(test::isLoaded(KORVA_SERVER_LIBRARY));
}

}  // namespace
}  // namespace korva
