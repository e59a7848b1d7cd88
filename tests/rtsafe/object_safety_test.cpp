// The whole object keeps the rules of the audio thread, called as an audio engine calls it.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/registry.h"
#include "tests/rtsafe/watched_thread.h"
#include "tests/support/registry_numbers.h"
#include "tests/support/shown_values.h"
#include "tests/support/telemetry_base.h"
#include "tests/support/wait_until.h"
#include "tests/system/class_test.h"
#include "tests/system/support/hosted_effect.h"

namespace korva::test {
namespace {

constexpr std::uint32_t mostFrames = 2048;

/// A call's connections, whose memory is there before it.
struct WatchedCall {
    HostedObject& object;
    std::uint32_t inChannels;
    std::uint32_t outChannels;
    std::vector<float> samples = std::vector<float>(std::size_t{mostFrames} * inChannels, 0.25f);
    std::vector<float> played = std::vector<float>(std::size_t{mostFrames} * outChannels);

    /// Buffers of all lengths, valid and silent, then in place.
    WatchedResult run() {
        return runWatched([this] {
            for (const std::uint32_t frames : {0u, 1u, 480u, 512u, 513u, mostFrames}) {
                noteProgress(static_cast<int>(frames));
                for (const std::uint32_t flags : {1u, 2u, 0u}) {
                    auto input = bufferOf(samples, frames, flags);
                    auto output = bufferOf(played, 0);
                    object.process(input, output);
                    auto both = input;
                    object.process(input, both);
                    static_cast<void>(object.realtime->CalcInputFrames(frames));
                    static_cast<void>(object.realtime->CalcOutputFrames(frames));
                }
            }
        });
    }
};

void expectClean(HostedObject& object, std::uint32_t inChannels, std::uint32_t outChannels) {
    WatchedCall call{object, inChannels, outChannels};
    const WatchedResult result = call.run();
    EXPECT_TRUE(result.clean) << result.violation << " with " << result.progress << " frames";
    EXPECT_EQ(result.progress, static_cast<int>(mostFrames));
}

class ObjectSafety : public testing::TestWithParam<ClassFacts> {};
INSTANTIATE_TEST_SUITE_P(OfEachClass, ObjectSafety, testing::ValuesIn(allClasses),
                         [](const auto& parameter) { return parameter.param.name; });

TEST_P(ObjectSafety, ProcessingBeforeAnyStreamIsSafe) {
    const HostedEffect host;
    HostedObject object(host.library, GetParam());
    expectClean(object, 2, 2);
}

TEST_P(ObjectSafety, ProcessingWithoutAnEngineIsSafe) {
    const HostedEffect host;
    HostedObject object(host.library, GetParam());
    ASSERT_EQ(object.lock(floats(8)), result::ok);
    expectClean(object, 8, 8);
}

TEST_P(ObjectSafety, PassingSoundThroughIsSafe) {
    HostedEffect host;
    HostedObject object(host.library, GetParam());
    ASSERT_EQ(host.initialize(object, mode::raw), result::ok);
    ASSERT_EQ(object.lock(floats(2)), result::ok);
    expectClean(object, 2, 2);
}

TEST_P(ObjectSafety, ProcessingByAModuleIsSafe) {
    HostedEffect host;
    const std::filesystem::path equaliser = KORVA_EQUALISER;
    std::filesystem::remove(host.library.folder() / ("PELLUX64" + equaliser.extension().string()));
    host.library.putModule(equaliser, "PELLUX64");
    host.install(GetParam());
    HostedObject object(host.library, GetParam());
    ASSERT_EQ(host.initialize(object), result::ok);
    ASSERT_TRUE(isLoaded((host.library.folder() / ("PELLUX64" + equaliser.extension().string())).string()));
    ASSERT_EQ(object.lock(floats(6)), result::ok);
    expectClean(object, 6, 6);
}

/// The key of the only instance that shows itself.
platform::RegistryKey shownKey(const TelemetryBase& base) {
    const std::vector<std::string> names = base.instances();
    EXPECT_EQ(names.size(), 1U);
    return names.empty() ? platform::RegistryKey() : base.open(names.front());
}

TEST_P(ObjectSafety, ProcessingIsSafeWhileAToolLooksAtTheMeters) {
    HostedEffect host;
    const TelemetryBase base;
    platform::RegistryKey set;
    ASSERT_EQ(platform::RegistryKey::root(platform::RegistryRoot::localMachine)
                  .create("Software\\Veltrane\\APO\\" + host.endpoint.id() + "\\FxProperties\\Volatile",
                          platform::RegistryAccess::readWrite, set),
              0);
    const std::filesystem::path equaliser = KORVA_EQUALISER;
    std::filesystem::remove(host.library.folder() / ("PELLUX64" + equaliser.extension().string()));
    host.library.putModule(equaliser, "PELLUX64");
    host.install(GetParam());
    HostedObject object(host.library, GetParam());
    ASSERT_EQ(host.initialize(object), result::ok);
    ASSERT_TRUE(setNumber(shownKey(base), "CaptureLevelMeters", 1));
    ASSERT_EQ(object.lock(floats(6)), result::ok);
    expectClean(object, 6, 6);
    // The last buffers were silent.
    static_cast<void>(object.play(std::vector<float>(6 * 480, 0.25f), 6, 6));
    ASSERT_TRUE(setNumber(shownKey(base), "CaptureLevelMeters", 2));
    EXPECT_TRUE(waitUntil([&] { return shownValuesOf(shownKey(base)).contains("InputLevelMeters"); }))
        << "the meters are off";
}

TEST(ObjectSafetyOfAStreamEffect, FoldingIsSafe) {
    const HostedEffect host;
    HostedObject object(host.library, streamClass);
    ASSERT_EQ(object.lock(floats(8), floats(2)), result::ok);
    WatchedCall call{object, 8, 2};
    EXPECT_TRUE(call.run().clean);
}

TEST(ObjectSafetyOfAStreamEffect, ItsOtherMethodsAreSeenToBeUnsafe) {
    const HostedEffect host;
    HostedObject object(host.library, streamClass);
    const WatchedResult result = runWatched([&] { static_cast<void>(object.apo->Reset()); });
    EXPECT_FALSE(result.clean) << "the watch doesn't see into the library";
}

}  // namespace
}  // namespace korva::test
