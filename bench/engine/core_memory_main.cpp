// bench_core_memory COUNT: makes so many effect cores with the first layout, each on a thread of its own,
// leads each to an engine, locks it and plays a second of sound through it; says by how many bytes the
// process has grown while all of them live, and ends them.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <string>

#include "bench/engine/core_rig.h"
#include "tests/support/engines.h"

namespace {

using namespace korva;

constexpr int buffersOfSecond = 100;

/// Memory of the process that is no file's: heaps, stacks and mapped memory, as far as it was touched.
long ownBytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    long kibibytes = 0;
    while (status >> word && word != "RssAnon:") {
    }
    status >> kibibytes;
    return kibibytes * 1024;
}

void play(bench::CoreRig& rig, bench::StereoBuffer& buffer) {
    rig.on([&] {
        rig.begin();
        rig.lock();
    });
    for (int i = 0; i < buffersOfSecond; ++i) {
        buffer.play(rig.core().realtime());
    }
}

}  // namespace

int main(int argumentCount, char** arguments) {
    if (argumentCount != 2) {
        return 2;
    }
    try {
        const bench::CoreGround ground(test::firstEngine, KORVA_IDLE_MODULE);
        bench::StereoBuffer buffer;
        const long before = ownBytes();
        std::deque<bench::CoreRig> rigs;
        for (int i = 0; i < std::atoi(arguments[1]); ++i) {
            play(rigs.emplace_back(ground), buffer);
        }
        std::printf("%ld\n", ownBytes() - before);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_core_memory: %s\n", error.what());
        return 1;
    }
}
