#include <signal.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <numbers>
#include <optional>

#include "tests/cli/monitor/monitor_test.h"
#include "tests/support/sound_files.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

using Json = nlohmann::json;

constexpr float leftPeak = 0.5F;
constexpr float rightPeak = 0.05F;

/// An object of the library that plays a sine in its own process, at the sound's pace, through a module.
class MonitorOfRealObject : public MonitorTest {
protected:
    void SetUp() override {
        makeTelemetry();
        constexpr int seconds = 30;  // more than a test takes
        Sound sound{.channels = 2, .format = SF_FORMAT_WAV | SF_FORMAT_PCM_16};
        for (int i = 0; i < sound.sampleRate * seconds; ++i) {
            const float sine =
                std::sin(static_cast<float>(i % 48) * 2.0F * std::numbers::pi_v<float> / 48.0F);
            sound.samples.push_back(leftPeak * sine);
            sound.samples.push_back(rightPeak * sine);
        }
        writeSound(path("in.wav"), sound);
        player.emplace(tool({"process", path("in.wav"), path("out.wav"), "--realtime", "--quiet", "--effect",
                             "mfx", "--module-dir", KORVA_EXAMPLE_MODULES, "--preset",
                             KORVA_SOURCE "/examples/presets/graphic_eq.json"}));
    }
    /// What a look at the only instance shows, once there is one that plays.
    [[nodiscard]] std::optional<Json> look() const {
        const Json shown = Json::parse(monitor({"--once", "--json"}).output, nullptr, false);
        const Json instances = shown.is_object() ? shown.at("instances") : Json::array();
        const bool plays = instances.size() == 1 && !instances[0].at("meters").at("input").is_null() &&
                           !instances[0].at("load").is_null();
        return plays ? std::optional(instances[0]) : std::nullopt;
    }
    [[nodiscard]] Json shownInstance() const {
        std::optional<Json> shown;
        EXPECT_TRUE(waitUntil([&] { return (shown = look()).has_value(); }));
        return shown.value_or(Json());
    }

    std::optional<ChildProcess> player;
};

float decibelsOf(const Json& level) {
    return 20.0F * std::log10(level.get<float>());
}

TEST_F(MonitorOfRealObject, ShowsLevelsWithinTwoDecibelsOfTheTruePeaks) {
    const Json levels = shownInstance().at("meters").at("input");
    EXPECT_NEAR(decibelsOf(levels.at(0)), decibelsOf(leftPeak), 2.0F);
    EXPECT_NEAR(decibelsOf(levels.at(1)), decibelsOf(rightPeak), 2.0F);
    EXPECT_EQ(levels.at(2), 0.0);
}

TEST_F(MonitorOfRealObject, ShowsItsFormatsVersionsAndLoad) {
    const Json instance = shownInstance();
    EXPECT_EQ(instance.at("effect"), "MFX");
    EXPECT_EQ(instance.at("input"), (Json{{"channels", 2}, {"mask", 3}}));
    EXPECT_EQ(instance.at("output"), (Json{{"channels", 2}, {"mask", 3}}));
    EXPECT_EQ(instance.at("sampleRate"), 48000);
    EXPECT_EQ(instance.at("libraryVersion"), "2.1.2.17");
    EXPECT_EQ(instance.at("engineStarts"), 1);
    EXPECT_EQ(instance.at("bufferMs"), 10);
    EXPECT_GT(instance.at("load"), 0.0);
    EXPECT_TRUE(instance.at("malformed").empty());
}

TEST_F(MonitorOfRealObject, IsLeftOverOnceItsProcessIsKilledAndCanBeSweptAway) {
    const std::string name = shownInstance().at("instance");
    EXPECT_EQ(monitor({"--stale"}).output, "no left-over key\n");
    player->send(SIGKILL);
    EXPECT_EQ(player->wait().signal, SIGKILL);
    EXPECT_TRUE(monitor({"--stale"}).output.starts_with(name));
    EXPECT_EQ(monitor({"--sweep", "--yes"}).output, "removed " + name + "\n");
    EXPECT_FALSE(hasKey(name));
}

TEST_F(MonitorOfRealObject, IsGoneWhenItsStreamIsOver) {
    const std::string name = shownInstance().at("instance");
    player->send(SIGTERM);
    static_cast<void>(player->wait());
    EXPECT_FALSE(hasKey(name));
    EXPECT_EQ(monitor({"--once"}).output, "no live instance\n");
}

}  // namespace
}  // namespace korva::test
