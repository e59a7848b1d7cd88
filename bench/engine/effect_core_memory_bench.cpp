// What effect cores take of memory, in processes of their own: all that such a process grows by, the
// registry's connections, the threads that watch and their stacks included. A byte is shown as a nanosecond.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

constexpr int liveOnes = 200;
constexpr double limitBytes = 2 * 1024 * 1024;

double bytesOfCores(int count) {
    const std::string command = std::string(KORVA_CORE_MEMORY) + " " + std::to_string(count);
    const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), &pclose);
    double bytes = 0.0;
    if (output == nullptr || std::fscanf(output.get(), "%lf", &bytes) != 1 || bytes <= 0.0) {
        throw std::runtime_error("the memory of cores wasn't told");
    }
    return bytes;
}

template <class Measure>
void registerBytes(const char* name, Measure bytes) {
    benchmark::RegisterBenchmark(name,
                                 [bytes](benchmark::State& state) {
                                     for (auto _ : state) {
                                         state.SetIterationTime(bytes() * 1e-9);
                                     }
                                 })
        ->Iterations(1)
        ->UseManualTime();
}

[[maybe_unused]] const bool registered = [] {
    registerBytes("bytes/core", [] { return bytesOfCores(1); });
    registerBytes("bytes/limit", [] { return limitBytes; });
    registerBytes("bytes/cores", [] { return bytesOfCores(liveOnes); });
    registerBytes("bytes/single_ones", [] { return liveOnes * bytesOfCores(1); });
    return true;
}();

}  // namespace
