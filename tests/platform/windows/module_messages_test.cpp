#include <gtest/gtest.h>
#include <windows.h>

#include <fstream>

#include "platform/module_library.h"
#include "tests/support/own_folder.h"

namespace korva::platform {
namespace {

TEST(ModuleMessages, OfTheThreadStayAsTheyWereSet) {
    const test::OwnFolder folder;
    const auto text = folder.path() / "text.dll";
    std::ofstream(text) << "no library";
    DWORD before = 0;
    SetThreadErrorMode(SEM_NOGPFAULTERRORBOX, &before);

    EXPECT_FALSE(ModuleLibrary::load(text));
    EXPECT_EQ(GetThreadErrorMode(), DWORD{SEM_NOGPFAULTERRORBOX});
    EXPECT_TRUE(ModuleLibrary::load(KORVA_NEEDING_LIBRARY));
    EXPECT_EQ(GetThreadErrorMode(), DWORD{SEM_NOGPFAULTERRORBOX});

    SetThreadErrorMode(before, nullptr);
}

}  // namespace
}  // namespace korva::platform
