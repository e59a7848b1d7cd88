#include <atomic>
#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "tests/cli/preset_tool_test.h"

namespace korva::test {
namespace {

using Clock = std::chrono::steady_clock;

class PresetInterruption : public PresetToolTest {
protected:
    PresetInterruption() {
        // Every chunk of the two differs, and so do their engines and numbers of chunks.
        const std::string everyChunk = R"({"module": -1, "id": -39, "bools": [true]},
            {"module": -1, "id": -16, "bytes": "aa"}, {"module": -1, "id": -14, "bytes": "bb"})";
        files[0] = file(presetJson(thirdEngine, everyChunk), "third.json");
        files[1] = file(presetJson(firstEngine, everyChunk + R"(, {"module": 5, "id": 13, "bytes": "cc"},
            {"module": 5, "id": 152, "bools": [true]})"),
                        "first.json");
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_TRUE(succeededQuietly(run(installLaunch(files[i]))));
            texts[i] = dump();
        }
    }

    [[nodiscard]] bool isOneOfBoth(const std::string& text) const {
        return text == texts[0] || text == texts[1];
    }

    std::string files[2];
    std::string texts[2];
};

/// Kills an installation at some moment of its life, or none: then it is let finish.
class Killer {
public:
    explicit Killer(std::chrono::nanoseconds lifeOfAnInstallation) : life(lifeOfAnInstallation) {}

    void installAndKill(const Launch& launch, bool letFinish) {
        ChildProcess child(launch);
        const auto moment = Clock::now() + life * static_cast<int>(generator() % 1000) / 1000;
        while (!letFinish && Clock::now() < moment) {
            std::this_thread::yield();
        }
        if (!letFinish) {
            child.send(SIGKILL);
        }
        const Outcome outcome = child.wait();
        (outcome.signal == SIGKILL ? killed : finished) += 1;
        failed += outcome.signal == 0 && outcome.exitCode != 0 ? 1 : 0;
    }

    int killed = 0;
    int finished = 0;
    int failed = 0;

private:
    std::chrono::nanoseconds life;
    std::mt19937 generator;  // Moments need no seed of their own: the system's timing is never the same.
};

TEST_F(PresetInterruption, AReaderSeesTheOldPresetOrTheNewWhenInstallationsAreKilled) {
    const auto begin = Clock::now();
    EXPECT_TRUE(succeededQuietly(run(installLaunch(files[0]))));
    Killer killer(Clock::now() - begin);
    std::atomic<bool> isDone = false;
    std::thread writing([&] {
        for (int round = 0; Clock::now() - begin < std::chrono::seconds(6); ++round) {
            killer.installAndKill(installLaunch(files[round % 2]), round % 4 == 3);
        }
        isDone = true;
    });
    int dumps = 0;
    while (!isDone) {
        const std::string text = dump();
        EXPECT_TRUE(isOneOfBoth(text)) << text;
        ++dumps;
    }
    writing.join();
    EXPECT_GT(killer.killed, 0);
    EXPECT_GT(killer.finished, 0);
    EXPECT_EQ(killer.failed, 0);
    EXPECT_GT(dumps, 1);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_TRUE(succeededQuietly(run(installLaunch(files[i]))));
        EXPECT_EQ(dump(), texts[i]);
    }
}

}  // namespace
}  // namespace korva::test
