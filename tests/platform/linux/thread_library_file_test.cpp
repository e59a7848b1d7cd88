// Threads of a library whose file is gone.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "platform/wait_handles.h"
#include "tests/platform/thread_library.h"
#include "tests/support/loaded_library.h"

namespace korva::platform {
namespace {

TEST(ThreadLibraryFile, MayBeDeletedWhileTheLibraryIsLoaded) {
    const std::string copy = testing::TempDir() + "korva_thread_library_" + std::to_string(getpid()) + ".so";
    std::filesystem::copy_file(KORVA_THREAD_LIBRARY, copy, std::filesystem::copy_options::overwrite_existing);
    test::LoadedLibrary library(copy);
    std::filesystem::remove(copy);
    Event mayEnd;
    mayEnd.signal();
    test::Errand errand{mayEnd.handle()};

    EXPECT_TRUE(library.function<test::RunThread>("runThread")(&errand));

    EXPECT_EQ(errand.answer, test::libraryAnswer);
    library.close();
    EXPECT_FALSE(test::isLoaded(copy));
}

}  // namespace
}  // namespace korva::platform
