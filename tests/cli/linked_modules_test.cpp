#include "korva/process/linked_modules.h"

#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>

#include "korva/errors.h"
#include "tests/support/own_folder.h"

namespace korva::tool {
namespace {

namespace fs = std::filesystem;

std::string textOf(const fs::path& file) {
    std::string text;
    std::ifstream(file) >> text;
    return text;
}

class ModulesLinked : public testing::Test {
protected:
    ModulesLinked() {
        fs::create_directories(modules / "data");
        std::ofstream(library) << "library";
        std::ofstream(modules / "module.so") << "module";
        std::ofstream(modules / "data" / "table") << "table";
    }

    const test::OwnFolder folder;
    const fs::path library = folder.path() / "libobject.so";
    const fs::path modules = folder.path() / "modules";
};

TEST_F(ModulesLinked, LieBesideTheLibrary) {
    const LinkedModules links(library, modules);
    EXPECT_EQ(links.library().filename(), "libobject.so");
    EXPECT_EQ(textOf(links.library()), "library");
    EXPECT_EQ(textOf(links.library().parent_path() / "module.so"), "module");
    EXPECT_EQ(textOf(links.library().parent_path() / "data" / "table"), "table");
}

TEST_F(ModulesLinked, GoAndLeaveWhatTheyLeadTo) {
    fs::path place;
    {
        const LinkedModules links(library, modules);
        place = links.library().parent_path();
    }
    EXPECT_FALSE(fs::exists(place));
    EXPECT_EQ(textOf(library), "library");
    EXPECT_EQ(textOf(modules / "module.so"), "module");
    EXPECT_EQ(textOf(modules / "data" / "table"), "table");
}

TEST_F(ModulesLinked, DoNotHideTheLibrary) {
    std::ofstream(modules / "libobject.so") << "another";
    const LinkedModules links(library, modules);
    EXPECT_EQ(textOf(links.library()), "library");
}

TEST_F(ModulesLinked, AreForOneUserEach) {
    const LinkedModules first(library, modules);
    const LinkedModules second(library, modules);
    EXPECT_NE(first.library(), second.library());
}

TEST_F(ModulesLinked, OfAFolderThatIsGoneAreNone) {
    EXPECT_THROW(LinkedModules(library, folder.path() / "none"), ToolError);
}

}  // namespace
}  // namespace korva::tool
