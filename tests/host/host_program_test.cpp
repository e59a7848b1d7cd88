#include <gtest/gtest.h>

#include "tests/support/own_registry.h"
#include "tests/support/run_program.h"

namespace korva::test {
namespace {

constexpr int done = 0;
constexpr int failed = 2;

int host(const std::vector<std::string>& arguments) {
    return runProgram(KORVA_HOST_PROGRAM, arguments);
}

TEST(HostProgram, PlaysThroughEachClass) {
    for (const char* const effect : {"sfx", "mfx", "efx"}) {
        for (const char* const generation : {"2", "3"}) {
            EXPECT_EQ(host({"--class", effect, "--generation", generation}), done);
        }
    }
}

TEST(HostProgram, FoldsInAStreamEffectOnly) {
    EXPECT_EQ(host({"--in-channels", "8", "--sound", "impulse"}), done);
    EXPECT_EQ(host({"--in-channels", "8", "--class", "mfx"}), failed);
}

TEST(HostProgram, PlaysEachLength) {
    for (const char* const frames : {"1", "479", "480", "481", "100000"}) {
        EXPECT_EQ(host({"--frames", frames}), done);
    }
    EXPECT_EQ(host({"--buffer", "1", "--frames", "100", "--rate", "96000"}), done);
}

TEST(HostProgram, TakesTheLibraryThatItIsGiven) {
    EXPECT_EQ(host({"--library", KORVA_LIBRARY}), done);
    EXPECT_EQ(host({"--library", KORVA_REFUSING_LIBRARY}), failed);
    EXPECT_EQ(host({"--library", KORVA_EMPTY_LIBRARY}), failed);
    EXPECT_EQ(host({"--library", "none"}), failed);
}

TEST(HostProgram, FindsNoObjectOfAClassThatIsNotRegistered) {
    const OwnRegistry registry;
    EXPECT_EQ(host({"--registered"}), failed);
}

TEST(HostProgram, RefusesWhatItDoesNotKnow) {
    EXPECT_EQ(host({"--help"}), done);
    EXPECT_EQ(host({"--frobnicate"}), failed);
    EXPECT_EQ(host({"--rate"}), failed);
    EXPECT_EQ(host({"--class", "gfx"}), failed);
    EXPECT_EQ(host({"--generation", "1"}), failed);
    EXPECT_EQ(host({"--endpoint", "nobodys"}), failed);
    for (const char* const count : {"0", "9", "-1", "two", "2x", ""}) {
        EXPECT_EQ(host({"--in-channels", count}), failed) << count;
        EXPECT_EQ(host({"--out-channels", count}), failed) << count;
    }
}

}  // namespace
}  // namespace korva::test
