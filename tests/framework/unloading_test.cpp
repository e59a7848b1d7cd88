// What a host may do to the library: unload it as soon as it has let go of its last object.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <thread>

#include "tests/support/loaded_library.h"
#include "tests/support/one_time_gate.h"
#include "tests/support/wait_until.h"

namespace korva::framework {
namespace {

using test::isLoaded;
using test::LoadedLibrary;

using AddOnAnotherThread = std::uint32_t(std::uint32_t a, std::uint32_t b);

const std::string libraryPath = KORVA_FRAMEWORK_LIBRARY;

std::uint32_t addAndUnload(std::uint32_t a, std::uint32_t b) {
    LoadedLibrary library(libraryPath);
    const std::uint32_t sum = library.function<AddOnAnotherThread>("addOnAnotherThread")(a, b);
    library.close();
    return sum;
}

TEST(Unloading, IsPossibleAsSoonAsTheLastScopeHasEnded) {
    for (std::uint32_t round = 0; round < 100; ++round) {
        ASSERT_EQ(addAndUnload(round, 2), round + 2);
        ASSERT_TRUE(test::waitUntil([] { return !isLoaded(libraryPath); })) << "round " << round;
    }
}

// A thread-local destructor of the library's would have nowhere to run.
TEST(Unloading, DoesNotKeepAThreadThatHasCalledTheLibraryFromEnding) {
    test::OneTimeGate hasUnloaded;
    bool isGone = false;
    std::thread caller([&] {
        addAndUnload(1, 2);
        isGone = test::waitUntil([] { return !isLoaded(libraryPath); });
        hasUnloaded.open();
    });
    EXPECT_TRUE(hasUnloaded.pass());
    caller.join();
    EXPECT_TRUE(isGone);
}

}  // namespace
}  // namespace korva::framework
