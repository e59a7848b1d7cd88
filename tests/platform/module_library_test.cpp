#include "platform/module_library.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/loaded_library.h"
#include "tests/support/own_folder.h"

namespace korva::platform {
namespace {

using test::isLoaded;
using test::LoadedLibrary;
using test::OwnFolder;

namespace fs = std::filesystem;

const std::string needing = KORVA_NEEDING_LIBRARY;
const std::string suffix = fs::path(needing).extension().string();

int numberOf(const ModuleLibrary& library, const char* name) {
    const auto function = reinterpret_cast<int (*)()>(library.find(name));
    return function == nullptr ? 0 : function();
}

/// While it lives, the current folder is another.
class CurrentFolder {
public:
    explicit CurrentFolder(const fs::path& folder) : before(fs::current_path()) { fs::current_path(folder); }
    ~CurrentFolder() { fs::current_path(before); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    const fs::path before;
};

TEST(ModuleLibrary, IsNoneAtFirst) {
    ModuleLibrary library;

    EXPECT_FALSE(library);
    EXPECT_EQ(library.find("ownNumber"), nullptr);
    library.unload();
    EXPECT_FALSE(library);
}

TEST(ModuleLibrary, ThatCannotBeLoadedGivesTheSystemsReason) {
    const OwnFolder folder;
    const fs::path file = folder.path() / ("text" + suffix);
    std::ofstream(file) << "no library";
    std::string reason;

    EXPECT_FALSE(ModuleLibrary::load(file, reason));
    EXPECT_NE(reason, "");
    EXPECT_FALSE(ModuleLibrary::load(folder.path() / "none", reason));
    EXPECT_NE(reason, "");
    EXPECT_TRUE(ModuleLibrary::load(needing, reason));
    EXPECT_EQ(reason, "");
}

TEST(ModuleLibrary, IsLoadedFromLoadToUnload) {
    ModuleLibrary library = ModuleLibrary::load(needing);
    ASSERT_TRUE(library);
    EXPECT_TRUE(isLoaded(needing));
    EXPECT_EQ(numberOf(library, "ownNumber"), 42);

    library.unload();

    EXPECT_FALSE(isLoaded(needing));
    EXPECT_FALSE(library);
    EXPECT_EQ(library.find("ownNumber"), nullptr);
    library.unload();
}

TEST(ModuleLibrary, IsUnloadedWithItsReference) {
    { const ModuleLibrary library = ModuleLibrary::load(needing); }
    EXPECT_FALSE(isLoaded(needing));
}

TEST(ModuleLibrary, StaysLoadedForTheLastReference) {
    ModuleLibrary first = ModuleLibrary::load(needing);
    ModuleLibrary second = ModuleLibrary::load(needing);

    first.unload();
    EXPECT_EQ(numberOf(second, "ownNumber"), 42);
    second.unload();
    EXPECT_FALSE(isLoaded(needing));
}

TEST(ModuleLibrary, MovesWithItsReference) {
    ModuleLibrary first = ModuleLibrary::load(needing);
    ModuleLibrary second = std::move(first);
    EXPECT_FALSE(first);  // NOLINT: moved from
    EXPECT_TRUE(isLoaded(needing));

    first = std::move(second);
    EXPECT_EQ(numberOf(first, "ownNumber"), 42);
    first = ModuleLibrary();
    EXPECT_FALSE(isLoaded(needing));
}

TEST(ModuleLibrary, IsKnownToBeLoadedByWhoDoesNotHoldIt) {
    EXPECT_FALSE(isLibraryLoaded(needing));
    EXPECT_FALSE(isLoaded(needing));
    {
        const LoadedLibrary others(needing);
        EXPECT_TRUE(isLibraryLoaded(needing));
        EXPECT_TRUE(isLibraryLoaded(needing));
    }
    EXPECT_FALSE(isLibraryLoaded(needing));
    EXPECT_FALSE(isLibraryLoaded("none" + suffix));
    EXPECT_FALSE(isLibraryLoaded(""));
}

TEST(ModuleLibrary, FindsWhatTheLibraryItselfExportsOnly) {
    const ModuleLibrary library = ModuleLibrary::load(needing);
    const ModuleLibrary other = ModuleLibrary::load(KORVA_NEEDED_LIBRARY);

    EXPECT_EQ(numberOf(other, "neededNumber"), 41);
    EXPECT_EQ(library.find("neededNumber"), nullptr);
    EXPECT_EQ(library.find("malloc"), nullptr);
    EXPECT_EQ(library.find("none such"), nullptr);
    EXPECT_EQ(library.find(""), nullptr);
}

TEST(ModuleLibrary, IsNoneForWhatIsNoLibrary) {
    const OwnFolder folder;
    const fs::path empty = folder.path() / ("empty" + suffix);
    const fs::path text = folder.path() / ("text" + suffix);
    { const std::ofstream file(empty); }
    std::ofstream(text) << std::string(70'000, 'x');

    EXPECT_FALSE(ModuleLibrary::load(folder.path()));
    EXPECT_FALSE(ModuleLibrary::load(folder.path() / ("none" + suffix)));
    EXPECT_FALSE(ModuleLibrary::load(empty));
    EXPECT_FALSE(ModuleLibrary::load(text));
}

TEST(ModuleLibrary, IsNoneWhereALibraryThatItNeedsIsMissing) {
    const OwnFolder folder;
    const std::string needed = fs::path(KORVA_NEEDED_LIBRARY).filename().string();

    EXPECT_FALSE(
        ModuleLibrary::load(folder.putLibraryWith(needing, "copy", needed, std::string(needed.size(), 'x'))));
    EXPECT_TRUE(ModuleLibrary::load(folder.putLibraryWith(needing, "same", needed, needed)));
}

TEST(ModuleLibrary, IsNotSearchedFor) {
    // The system finds it by that name.
    { ASSERT_NO_THROW(LoadedLibrary(KORVA_SYSTEM_LIBRARY)); }

    EXPECT_FALSE(ModuleLibrary::load(KORVA_SYSTEM_LIBRARY));
    EXPECT_FALSE(ModuleLibrary::load(""));
}

TEST(ModuleLibrary, IsNotLookedForInTheCurrentFolder) {
    const CurrentFolder current(fs::path(needing).parent_path());
    const std::string name = fs::path(needing).filename().string();

    EXPECT_FALSE(ModuleLibrary::load(name));
    EXPECT_FALSE(ModuleLibrary::load(fs::path(".") / name));
    EXPECT_TRUE(ModuleLibrary::load(fs::current_path() / name));
}

TEST(LibraryPath, IsTheNameInTheFolderWithTheSystemsSuffix) {
    const fs::path folder = fs::temp_directory_path() / "folder";

    EXPECT_EQ(libraryPath(folder, "NAME"), folder / ("NAME" + suffix));
    EXPECT_EQ(libraryPath(folder, "a.b"), folder / ("a.b" + suffix));
    EXPECT_EQ(libraryPath(folder, "NAME" + suffix), folder / ("NAME" + suffix + suffix));
    EXPECT_EQ(libraryPath(folder, "deeper/NAME"), folder / ("deeper/NAME" + suffix));
    EXPECT_EQ(libraryPath(folder, ""), folder / suffix);
}

TEST(LibraryPath, HasOneSeparatorBehindAFolderThatEndsInOne) {
    const fs::path folder = fs::temp_directory_path() / "folder";

    EXPECT_EQ(libraryPath(folder / "", "NAME").native(), (folder / ("NAME" + suffix)).native());
}

TEST(LibraryPath, OfANameWithARootOrADriveIsNotPutUnderTheFolder) {
    for (const char* name : {"/elsewhere/NAME", "/NAME", "C:/elsewhere/NAME", "C:NAME", "z:NAME"}) {
        EXPECT_EQ(libraryPath(fs::temp_directory_path(), name), fs::path(name + suffix)) << name;
    }
}

TEST(LibraryPath, OfANameWithTheSystemsOwnSeparatorAheadIsNotPutUnderTheFolder) {
    const std::string name = (fs::path("/") / "elsewhere" / "NAME").make_preferred().string();

    EXPECT_EQ(libraryPath(fs::temp_directory_path(), name).native(), fs::path(name + suffix).native());
}

TEST(LibraryPath, OfANameBeyondAsciiIsThatOfTheFileThatNarrowTextNames) {
    const OwnFolder folder;
    // Code pages agree on few bytes, and on this one least.
    const std::string name = "a\x80z";
    { const std::ofstream file((folder.path().string() + "/" + name + suffix).c_str()); }

    EXPECT_TRUE(fs::exists(libraryPath(folder.path(), name)));
}

TEST(LibraryPath, RaisesForANameLongerThan31Bits) {
    // Nobody reads behind the first bytes: there is nothing.
    const std::string_view tooLong("x", std::size_t{1} << 31);

    EXPECT_THROW(static_cast<void>(libraryPath("/", tooLong)), std::length_error);
}

/// What a copy of the library says that is loaded by that path, asked while another folder is the current
/// one.
fs::path toldBy(const char* function, const fs::path& library, const fs::path& currentWhenAsked) {
    const LoadedLibrary loaded(library.string());
    const CurrentFolder current(currentWhenAsked);
    std::array<char, 1000> text{};
    const auto tell = loaded.function<std::size_t(char*, std::size_t)>(function);
    return std::string(text.data(), tell(text.data(), text.size()));
}

fs::path folderToldBy(const fs::path& library, const fs::path& currentWhenAsked) {
    return toldBy("tellOwnFolder", library, currentWhenAsked);
}

TEST(OwnLibraryPath, OfAProgramIsThePrograms) {
    EXPECT_TRUE(ownLibraryPath().is_absolute());
    EXPECT_EQ(ownLibraryPath().stem(), "korva_platform_test");
    EXPECT_TRUE(fs::equivalent(ownLibraryPath().parent_path(), KORVA_PROGRAM_FOLDER)) << ownLibraryPath();
}

TEST(OwnLibraryPath, OfALibraryIsTheLibrarys) {
    const OwnFolder folder;
    const fs::path library = folder.putLibrary(KORVA_FOLDER_LIBRARY, "a library");

    const fs::path told = toldBy("tellOwnPath", library, fs::temp_directory_path());

    EXPECT_TRUE(told.is_absolute());
    EXPECT_TRUE(fs::equivalent(told, library)) << told;
}

TEST(OwnLibraryPath, OfALibraryThatWasLoadedByARelativePathIsWhole) {
    const OwnFolder folder;
    const OwnFolder elsewhere;
    fs::create_directory(folder.path() / "deeper");
    const fs::path library = folder.putLibrary(KORVA_FOLDER_LIBRARY, "deeper/library");
    const CurrentFolder current(folder.path());
    const fs::path relative = (fs::path(".") / "deeper" / ("library" + suffix)).make_preferred();

    const fs::path told = toldBy("tellOwnPath", relative, elsewhere.path());

    EXPECT_TRUE(told.is_absolute());
    EXPECT_TRUE(fs::equivalent(told, library)) << told;
}

TEST(OwnLibraryFolder, OfAProgramIsThePrograms) {
    EXPECT_TRUE(ownLibraryFolder().is_absolute());
    EXPECT_TRUE(fs::equivalent(ownLibraryFolder(), KORVA_PROGRAM_FOLDER)) << ownLibraryFolder();
}

TEST(OwnLibraryFolder, OfALibraryIsTheLibrarys) {
    const OwnFolder folder;
    const fs::path library = folder.putLibrary(KORVA_FOLDER_LIBRARY, "library");

    const fs::path told = folderToldBy(library, fs::temp_directory_path());

    EXPECT_TRUE(told.is_absolute());
    EXPECT_TRUE(fs::equivalent(told, folder.path())) << told;
}

TEST(OwnLibraryFolder, OfALibraryThatWasLoadedByARelativePathStaysWhereItWas) {
    const OwnFolder folder;
    const OwnFolder elsewhere;
    fs::create_directory(folder.path() / "deeper");
    folder.putLibrary(KORVA_FOLDER_LIBRARY, "deeper/library");
    const CurrentFolder current(folder.path());
    const fs::path relative = (fs::path(".") / "deeper" / ("library" + suffix)).make_preferred();

    const fs::path told = folderToldBy(relative, elsewhere.path());

    EXPECT_TRUE(told.is_absolute());
    EXPECT_TRUE(fs::equivalent(told, folder.path() / "deeper")) << told;
}

TEST(OwnLibraryFolder, LeavesTheLibraryAsManyReferencesAsItHad) {
    const OwnFolder folder;
    const fs::path library = folder.putLibrary(KORVA_FOLDER_LIBRARY, "library");

    static_cast<void>(folderToldBy(library, folder.path()));

    EXPECT_FALSE(isLoaded(library.string()));
}

}  // namespace
}  // namespace korva::platform
