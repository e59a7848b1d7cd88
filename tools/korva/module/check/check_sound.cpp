// The checks that compare sound to the bit.
#include <array>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "korva/module/check/check_report.h"
#include "korva/module/check/checks.h"
#include "korva/module/check/formats.h"
#include "korva/module/check/parameters.h"
#include "korva/module/check/sound.h"
#include "korva/module/check/tested_module.h"

namespace korva::tool {
namespace {

constexpr std::size_t soundFrames = 12 * KORVA_BLOCK_FRAMES;

Cuts wholeBlocks() {
    return {KORVA_BLOCK_FRAMES};
}

void expectSame(const Sound& sound, const Sound& expected, const Scene& scene, const std::string& fault) {
    if (const std::string difference = firstDifference(sound, expected); !difference.empty()) {
        failCheck("{}: {} ({})", fault, difference, scene.name());
    }
}

/// Cuts to try, with what a reader calls them.
std::vector<std::pair<std::string, Cuts>> cutsToTry(std::uint32_t seed) {
    return {{"blocks of 1 frame", {1}},          {"blocks of 511 frames", {511}},
            {"blocks of 480 frames", {480}},     {"blocks of 7 and 512 frames in turn", {7, 512}},
            {"random blocks", randomCuts(seed)}, {"other random blocks", randomCuts(seed + 1)}};
}

/// An instance under way, and what it has to play.
struct Player {
    Player(const TestedModule& module, const Scene& playedScene, std::uint32_t seed)
        : scene(playedScene),
          input(makeNoise(planesOf(scene.in), soundFrames, seed)),
          alone(playAnew(module, scene, input, wholeBlocks())),
          instance(module, scene.document),
          bus(GuardedMemory::Place::loose) {
        begin(instance, scene);
    }

    const Scene scene;
    const Sound input;
    const Sound alone;  ///< What it sounds like when nobody else plays.
    TestedInstance instance;
    Bus bus;
};

void expectAsAlone(Player& player, const std::string& fault) {
    expectSame(play(player.instance, player.scene, player.input, wholeBlocks(), player.bus), player.alone,
               player.scene, fault);
}

/// A part of a sound.
Sound cutOut(const Sound& sound, std::size_t first, std::size_t frames) {
    Sound part;
    for (std::size_t plane = 0; plane < sound.size(); ++plane) {
        if (!sound[plane].empty()) {
            const auto begin = sound[plane].begin() + static_cast<std::ptrdiff_t>(first);
            part[plane].assign(begin, begin + static_cast<std::ptrdiff_t>(frames));
        }
    }
    return part;
}

void append(Sound& sound, const Sound& part) {
    for (std::size_t plane = 0; plane < sound.size(); ++plane) {
        sound[plane].insert(sound[plane].end(), part[plane].begin(), part[plane].end());
    }
}

void expectUndisturbedInTurns(Player& one, Player& other) {
    constexpr std::size_t step = 2 * KORVA_BLOCK_FRAMES;
    std::array<Sound, 2> heard;
    for (std::size_t first = 0; first < soundFrames; first += step) {
        append(heard[0],
               play(one.instance, one.scene, cutOut(one.input, first, step), wholeBlocks(), one.bus));
        append(heard[1],
               play(other.instance, other.scene, cutOut(other.input, first, step), wholeBlocks(), other.bus));
    }
    expectSame(heard[0], one.alone, one.scene, "another instance that plays in turns changes the sound");
    expectSame(heard[1], other.alone, other.scene, "another instance that plays in turns changes the sound");
}

/// Lives of instances on a thread of their own, each of which has to sound as if it were alone.
void playRounds(const TestedModule& module, const Player& player, std::string& fault) {
    constexpr int rounds = 8;
    for (int round = 0; round < rounds && fault.empty(); ++round) {
        fault = firstDifference(playAnew(module, player.scene, player.input, wholeBlocks()), player.alone);
    }
}

void expectUndisturbedByThreads(const TestedModule& module, const Player& one, const Player& other) {
    std::array<std::string, 2> faults;
    std::thread thread([&] { playRounds(module, other, faults[1]); });
    playRounds(module, one, faults[0]);
    thread.join();
    for (const std::string& fault : faults) {
        if (!fault.empty()) {
            failCheck("another instance that plays at the same time changes the sound: {} ({})", fault,
                      one.scene.name());
        }
    }
}

/// What an instance heard in its last life is gone in the next, without a Clear. Settings may fade in.
void expectFreshStart(const TestedModule& module, Player& player) {
    TestedInstance fresh(module, player.scene.document);
    makeReady(fresh, player.scene);
    const Sound expected = play(fresh, player.scene, player.input, wholeBlocks(), player.bus);
    makeReady(player.instance, player.scene);
    const Sound heard = play(player.instance, player.scene, player.input, wholeBlocks(), player.bus);
    player.instance.uninitialize();
    // Where they fade, an instance that has them already sounds as after a Clear.
    if (!firstDifference(heard, player.alone).empty()) {
        expectSame(heard, expected, player.scene,
                   "after another ZRDSPAPI_Initialize the same sound comes out differently");
    }
}

}  // namespace

Verdict checkCuts(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    for (const Scene& scene : scenesFor(module, setting.seed)) {
        noteSituation(scene.name());
        const Sound input = makeNoise(planesOf(scene.in), soundFrames, setting.seed);
        const Sound expected = playAnew(module, scene, input, wholeBlocks());
        for (const auto& [name, cuts] : cutsToTry(setting.seed)) {
            expectSame(playAnew(module, scene, input, cuts), expected, scene,
                       name + " sound other than blocks of 512");
        }
    }
    return {};
}

Verdict checkRepeatable(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    for (const Scene& scene : scenesFor(module, setting.seed)) {
        noteSituation(scene.name());
        Player player(module, scene, setting.seed);
        expectAsAlone(player, "a second instance sounds other than the first");
        for (int round = 0; module.api.Clear != nullptr && round < 2; ++round) {
            player.instance.clear();
            expectAsAlone(player, "after ZRDSPAPI_Clear the same sound comes out differently");
        }
        player.instance.uninitialize();
        if (module.api.Initialize != nullptr) {
            expectFreshStart(module, player);
        }
    }
    return {};
}

Verdict checkInstances(const CheckSetting& setting) {
    const TestedModule module(setting.file);
    const std::vector<Scene> scenes = scenesFor(module, setting.seed);
    // They follow one another in pairs: of one layout, with other parameters.
    for (std::size_t i = 0; i + 1 < scenes.size(); i += 2) {
        noteSituation(scenes[i].name());
        Player one(module, scenes[i], setting.seed);
        Player other(module, scenes[i + 1], setting.seed + 1);
        expectUndisturbedInTurns(one, other);
        expectUndisturbedByThreads(module, one, other);
        one.instance.uninitialize();
        other.instance.uninitialize();
    }
    return {};
}

}  // namespace korva::tool
