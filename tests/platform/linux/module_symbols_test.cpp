#include <gtest/gtest.h>

#include "platform/module_library.h"
#include "tests/support/own_folder.h"

namespace korva::platform {
namespace {

// The library itself would look for the function when it is first called.
TEST(ModuleSymbols, AreAllThereWhenAModuleIsLoadedOrItIsNone) {
    const test::OwnFolder folder;
    const char* const library = KORVA_NEEDING_LIBRARY;

    EXPECT_FALSE(ModuleLibrary::load(folder.putLibraryWith(library, "copy", "neededNumber", "otherNumbers")));
    EXPECT_TRUE(ModuleLibrary::load(folder.putLibraryWith(library, "same", "neededNumber", "neededNumber")));
}

}  // namespace
}  // namespace korva::platform
