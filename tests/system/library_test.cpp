// The library as a file, and as something that is loaded and unloaded.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/one_time_gate.h"
#include "tests/support/thread_count.h"
#include "tests/support/wait_until.h"
#include "tests/system/support/exported_names.h"
#include "tests/system/support/hosted_effect.h"

namespace korva::test {
namespace {

TEST(Library, ExportsWhatAServerOfClassesDoesAndNothingElse) {
    const HostedLibrary library;
    EXPECT_EQ(exportedNames(library.path()),
              (std::vector<std::string>{"DllCanUnloadNow", "DllGetClassObject", "DllRegisterServer",
                                        "DllUnregisterServer"}));
}

TEST(Library, MayBeUnloadedAtFirst) {
    const HostedLibrary library;
    EXPECT_EQ(library.canUnloadNow(), result::ok);
}

TEST(Library, IsLoadedUsedAndUnloadedAgainAndAgain) {
    const std::size_t threads = threadCountAtRest();
    for (int round = 0; round < 50; ++round) {
        const HostedLibrary library;  // asserts that it goes
        HostedObject object(library, allClasses[static_cast<std::size_t>(round) % allClasses.size()]);
        ASSERT_EQ(object.lock(floats(2)), result::ok);
        EXPECT_EQ(object.play(std::vector<float>{1, 2}, 2, 2), (std::vector<float>{1, 2}));
        EXPECT_EQ(object.release(), 0U);
        EXPECT_EQ(library.canUnloadNow(), result::ok);
    }
    EXPECT_TRUE(waitUntil([&] { return threadCount() <= threads; })) << threadCount();
}

TEST(Library, LeavesNoThreadAfterAModuleWasHeard) {
    const std::size_t threads = threadCountAtRest();
    for (int round = 0; round < 5; ++round) {
        HostedEffect effect;
        effect.install(modeClass);
        HostedObject object(effect.library, modeClass);
        ASSERT_EQ(effect.initialize(object), result::ok);
        ASSERT_EQ(object.lock(floats(2)), result::ok);
        EXPECT_EQ(object.play(std::vector<float>{1, 1}, 2, 2), (std::vector<float>{0.5f, 0.5f}));
    }
    EXPECT_TRUE(waitUntil([&] { return threadCount() <= threads; })) << threadCount();
}

TEST(Library, GoesBeforeAThreadOfTheHostsThatHasUsedIt) {
    OneTimeGate used;
    OneTimeGate unloaded;
    std::thread host;
    {
        const HostedLibrary library;
        host = std::thread([&] {
            const platform::ComApartment apartment;
            {
                HostedObject object(library, streamClass);
                EXPECT_EQ(object.lock(floats(2)), result::ok);
                EXPECT_EQ(object.play(std::vector<float>{1, 2}, 2, 2), (std::vector<float>{1, 2}));
            }
            used.open();
            EXPECT_TRUE(unloaded.pass());
        });
        EXPECT_TRUE(used.pass());
    }
    unloaded.open();
    host.join();
}

TEST(Library, IsLoadedTwiceFromTwoFoldersWithoutTheOnesKnowingOfTheOther) {
    const HostedLibrary one;
    const HostedLibrary other;
    auto object = one.make(streamClass);
    EXPECT_EQ(one.canUnloadNow(), result::no);
    EXPECT_EQ(other.canUnloadNow(), result::ok);
    EXPECT_EQ(object.release(), 0U);
    EXPECT_EQ(one.canUnloadNow(), result::ok);
}

}  // namespace
}  // namespace korva::test
