// A module's host keeps the rules of the audio thread; and the watch sees into the module.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#include "engine/dsp_engine.h"
#include "tests/rtsafe/watched_thread.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/stream.h"

namespace korva::test {
namespace {

using framework::Held;
using framework::Ref;

Held<engine::DspEngine> engineOf(const std::string& module, const std::string& folder) {
    const auto document = Ref<const engine::EngineConfigDocument>::adopt(
        new engine::EngineConfigDocument(nlohmann::json{{"PlatformModuleNames", {module}}}));
    return Held<engine::DspEngine>::first(engine::createDspEngine(document, folder));
}

/// A stream of stereo through an engine. All memory is there before `play`.
class ModuleStream {
public:
    explicit ModuleStream(engine::DspEngine& engine) { stream.processor.exchangeEngine(&engine); }

    void play(std::uint32_t frames) noexcept {
        auto input = connectionTo(source, frames);
        auto output = connectionTo(target, 0);
        process(stream.processor, input, output);
    }

    Stream stream{formatOf(2), formatOf(2)};
    std::vector<float> source = std::vector<float>(4096, 0.5F);
    std::vector<float> target = std::vector<float>(4096, Stream::untouched);
};

TEST(ModuleSafety, AModulesHostNeitherAllocatesNorLocksNorWaitsNorCallsTheSystem) {
    const Held<engine::DspEngine> engine = engineOf("minimal", KORVA_EXAMPLE_MODULES);
    ASSERT_TRUE(engine->hasInstance());
    ModuleStream played(*engine);

    const WatchedResult result = runWatched([&] {
        for (const std::uint32_t frames : {1U, 480U, 512U, 513U, 2048U}) {
            noteProgress(static_cast<int>(frames));
            played.play(frames);
        }
    });

    EXPECT_TRUE(result.clean) << result.violation << " with " << result.progress << " frames";
    EXPECT_EQ(result.progress, 2048);
}

TEST(ModuleSafety, TheWatchedModuleIsHeard) {
    const Held<engine::DspEngine> engine = engineOf("minimal", KORVA_EXAMPLE_MODULES);
    ModuleStream played(*engine);

    played.play(2048);

    EXPECT_EQ(played.target, std::vector<float>(4096, 0.25F));
}

TEST(ModuleSafety, AModuleThatWritesAFileIsNamed) {
    const Recording recording;
    const Held<engine::DspEngine> engine = engineOf("recorder", KORVA_TEST_MODULES);
    ASSERT_TRUE(engine->hasInstance());
    ModuleStream played(*engine);

    EXPECT_EQ(runWatched([&] { played.play(480); }).violation, "malloc");
}

}  // namespace
}  // namespace korva::test
