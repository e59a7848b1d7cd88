// A whole processing call, beside its definition, beside another mixer, and beside the memory traffic of
// its planes.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

extern "C" {
#include <libswresample/swresample.h>
}

#include "rt/channel_mixer.h"
#include "rt/rt_processor.h"

namespace {

using namespace korva;
using rt::EngineFormat;

constexpr std::uint32_t stereo = 0x3;
constexpr std::uint32_t surround51 = 0x3F;
constexpr std::uint32_t surround71 = 0x63F;

EngineFormat formatOf(std::uint32_t mask) {
    EngineFormat format;
    format.Assign(48000, std::popcount(mask), mask);
    return format;
}

/// A buffer as an audio engine hands it out: at the start of a page.
template <typename T>
struct PageAllocator {
    using value_type = T;
    T* allocate(std::size_t count) {
        return static_cast<T*>(::operator new (count * sizeof(T), std::align_val_t{4096}));
    }
    void deallocate(T* start, std::size_t) { ::operator delete (start, std::align_val_t{4096}); }
    bool operator==(const PageAllocator&) const = default;
};
using Buffer = std::vector<float, PageAllocator<float>>;

/// Sound at about a tenth of full scale; the same for every case.
Buffer noise(std::size_t samples) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> level(-0.1f, 0.1f);
    Buffer sound(samples);
    for (float& sample : sound) {
        sample = level(random);
    }
    return sound;
}

/// A module that does nothing but the fold.
class FoldingModule final : public rt::BlockProcessor {
public:
    FoldingModule(const EngineFormat& input, const EngineFormat& output, const rt::Kernels& used)
        : in(input), out(output), kernels(used) {}
    void Process(rt::DspBlock* block) noexcept override { rt::ChannelMixer(*block, in, out, kernels); }

private:
    EngineFormat in;
    EngineFormat out;
    const rt::Kernels& kernels;
};

/// A module that leaves the planes as they are.
class IdleModule final : public rt::BlockProcessor {
public:
    void Process(rt::DspBlock* block) noexcept override { benchmark::DoNotOptimize(block); }
};

/// A locked stream of one shape, and its two buffers.
struct Stream {
    Stream(const rt::Kernels& kernels, std::uint32_t inMask, std::uint32_t outMask, std::uint32_t frames)
        : in(formatOf(inMask)),
          out(formatOf(outMask)),
          processor(kernels),
          input(noise(frames * static_cast<std::size_t>(in.channelCount))),
          output(frames * static_cast<std::size_t>(out.channelCount)) {
        processor.inFormat.set(in);
        processor.outFormat.set(out);
        processor.inputChannelCount.set(in.channelCount);
        processor.outputChannelCount.set(out.channelCount);
        const auto release = rt::MeterRelease::forSampleRate(in.sampleRate);
        processor.meterReleaseFloor.set(release.floor);
        processor.meterReleaseGrowth.set(release.growth);
        inputConnection = {.pBuffer = reinterpret_cast<UINT_PTR>(input.data()),
                           .u32ValidFrameCount = frames,
                           .u32BufferFlags = published::BUFFER_VALID,
                           .u32Signature = published::connectionPropertySignature};
        outputConnection = inputConnection;
        outputConnection.pBuffer = reinterpret_cast<UINT_PTR>(output.data());
    }

    void process() {
        auto* from = &inputConnection;
        auto* to = &outputConnection;
        processor.Process(1, &from, 1, &to, 2);
        benchmark::ClobberMemory();
    }

    EngineFormat in;
    EngineFormat out;
    rt::RtProcessor processor;
    Buffer input;
    Buffer output;
    published::APO_CONNECTION_PROPERTY inputConnection{};
    published::APO_CONNECTION_PROPERTY outputConnection{};
};

enum class Module { none, idle, folding };

/// Which version is measured; asked when it runs, since the fastest is chosen only as the program starts.
using Version = const rt::Kernels& (*)() noexcept;

const rt::Kernels& plain() noexcept {
    return *rt::findKernels("plain");
}

void path(benchmark::State& state, const rt::Kernels& kernels, std::uint32_t inMask, Module module,
          bool metered) {
    Stream stream(kernels, inMask, stereo, static_cast<std::uint32_t>(state.range(0)));
    FoldingModule folding(stream.in, stream.out, kernels);
    IdleModule idle;
    if (module != Module::none) {
        stream.processor.exchangeEngine(module == Module::idle ? static_cast<rt::BlockProcessor*>(&idle)
                                                               : &folding);
    }
    stream.processor.levelMetersEnabled.set(metered ? 1 : 0);
    for (auto _ : state) {
        stream.process();
    }
}

/// Sixteen planes as the path lays them out: padded, so that they don't fall on the same cache lines.
struct Planes {
    Planes() {
        for (std::size_t plane = 0; plane < rt::planeCount; ++plane) {
            wet[plane] = samples[plane].data();
            dry[plane] = samples[rt::planeCount + plane].data();
        }
    }
    alignas(
        64) std::array<std::array<float, rt::blockFrames + 16>, std::size_t{2} * rt::planeCount> samples{};
    std::array<float*, rt::planeCount> wet{};
    std::array<float*, rt::planeCount> dry{};
};

/// The loops of a call alone, with all sixteen planes written and the fold done by a module. A call leaves
/// the dry planes out where nobody reads them.
void loops(benchmark::State& state, Version version, std::uint32_t inMask) {
    const rt::Kernels& kernels = version();
    const auto frames = static_cast<std::uint32_t>(state.range(0));
    const EngineFormat in = formatOf(inMask);
    const EngineFormat out = formatOf(stereo);
    const auto channels = static_cast<std::uint32_t>(in.channelCount);
    FoldingModule folding(in, out, kernels);
    IdleModule idle;
    rt::BlockProcessor& module = inMask == stereo ? static_cast<rt::BlockProcessor&>(idle) : folding;
    auto planes = std::make_unique<Planes>();
    const Buffer input = noise(std::size_t{frames} * channels);
    Buffer output(std::size_t{frames} * 2);
    for (auto _ : state) {
        for (std::uint32_t done = 0; done < frames; done += rt::blockFrames) {
            const std::uint32_t n = std::min(rt::blockFrames, frames - done);
            kernels.deinterleave(input.data() + std::size_t{done} * channels, channels,
                                 in.planeOfChannel.data(), planes->wet.data(), planes->dry.data(), n);
            rt::DspBlock block{
                .channels = planes->wet.data(), .inChannels = channels, .outChannels = 2, .frames = n};
            module.Process(&block);
            kernels.interleave(planes->wet.data(), out.planeOfChannel.data(), 2,
                               output.data() + std::size_t{done} * 2, n);
        }
        benchmark::ClobberMemory();
    }
}

/// Whether `folded` is our fold of `input`, but for rounding: then both did the same work.
bool foldsAsWeDo(const Buffer& input, const Buffer& folded, std::uint32_t inMask) {
    const auto frames = static_cast<std::uint32_t>(folded.size() / 2);
    Stream stream(*rt::findKernels("plain"), inMask, stereo, frames);
    stream.input = input;
    stream.inputConnection.pBuffer = reinterpret_cast<UINT_PTR>(stream.input.data());
    stream.process();
    for (std::size_t i = 0; i < folded.size(); ++i) {
        if (!(std::abs(folded[i] - stream.output[i]) <= 1e-6f)) {
            return false;
        }
    }
    return true;
}

/// The same fold by libswresample, interleaved to interleaved, with our coefficients.
void swresample(benchmark::State& state, std::uint32_t inMask) {
    const int frames = static_cast<int>(state.range(0));
    const EngineFormat in = formatOf(inMask);
    SwrContext* context = nullptr;
    AVChannelLayout inLayout{};
    AVChannelLayout outLayout{};
    av_channel_layout_from_mask(&inLayout, inMask);
    av_channel_layout_from_mask(&outLayout, stereo);
    swr_alloc_set_opts2(&context, &outLayout, AV_SAMPLE_FMT_FLT, 48000, &inLayout, AV_SAMPLE_FMT_FLT, 48000,
                        0, nullptr);
    const std::array<double, 16> matrix71 = {1, 0, 0.5, 0.5, 0.7083, 0,      0.7083, 0,
                                             0, 1, 0.5, 0.5, 0,      0.7083, 0,      0.7083};
    const std::array<double, 12> matrix51 = {1, 0, 0.5, 0.5, 0.7083, 0, 0, 1, 0.5, 0.5, 0, 0.7083};
    swr_set_matrix(context, inMask == surround71 ? matrix71.data() : matrix51.data(), in.channelCount);
    if (swr_init(context) < 0) {
        state.SkipWithError("swr_init failed");
        return;
    }
    const auto input = noise(static_cast<std::size_t>(frames * in.channelCount));
    Buffer output(static_cast<std::size_t>(frames) * 2);
    const auto* from = reinterpret_cast<const std::uint8_t*>(input.data());
    auto* to = reinterpret_cast<std::uint8_t*>(output.data());
    for (auto _ : state) {
        if (swr_convert(context, &to, frames, &from, frames) != frames) {
            state.SkipWithError("swr_convert gave another number of frames");
            break;
        }
        benchmark::ClobberMemory();
    }
    if (!foldsAsWeDo(input, output, inMask)) {
        state.SkipWithError("libswresample folds otherwise");
    }
    swr_free(&context);
}

/// What the planes cost in memory alone: the input's bytes copied into wet and dry planes, the rest zeroed,
/// and the output's bytes written. Block by block and on padded planes, as the path does it.
void planeTraffic(benchmark::State& state, std::size_t channels) {
    auto planes = std::make_unique<Planes>();
    const auto frames = static_cast<std::size_t>(state.range(0));
    const Buffer input = noise(frames * channels);
    Buffer output(frames * 2);
    for (auto _ : state) {
        for (std::size_t done = 0; done < frames; done += rt::blockFrames) {
            const std::size_t n = std::min<std::size_t>(rt::blockFrames, frames - done);
            const float* from = input.data() + done * channels;
            for (std::size_t plane = 0; plane < rt::planeCount; ++plane) {
                if (plane < channels) {
                    std::memcpy(planes->wet[plane], from + plane * n, n * sizeof(float));
                    std::memcpy(planes->dry[plane], from + plane * n, n * sizeof(float));
                } else {
                    std::memset(planes->wet[plane], 0, n * sizeof(float));
                    std::memset(planes->dry[plane], 0, n * sizeof(float));
                }
            }
            benchmark::ClobberMemory();
            std::memcpy(output.data() + done * 2, planes->wet[0], n * sizeof(float));
            std::memcpy(output.data() + done * 2 + n, planes->wet[1], n * sizeof(float));
            benchmark::ClobberMemory();
        }
    }
}

void forEachLength(benchmark::internal::Benchmark* bench) {
    bench->Arg(480)->Arg(1024);
}

void registerVersions(const std::string& name, void (*run)(benchmark::State&, Version, std::uint32_t),
                      std::uint32_t inMask) {
    forEachLength(benchmark::RegisterBenchmark((name + "/plain").c_str(), run, plain, inMask));
    forEachLength(benchmark::RegisterBenchmark((name + "/fast").c_str(), run, rt::chosenKernels, inMask));
}

template <Module module, bool metered = false>
void call(benchmark::State& state, Version version, std::uint32_t inMask) {
    path(state, version(), inMask, module, metered);
}

[[maybe_unused]] const bool registered = [] {
    registerVersions("call/7.1_module", call<Module::folding>, surround71);
    registerVersions("call/7.1_no_module", call<Module::none>, surround71);
    registerVersions("call/5.1_no_module", call<Module::none>, surround51);
    registerVersions("call/7.1_metered", call<Module::none, true>, surround71);
    registerVersions("planes/7.1", loops, surround71);
    registerVersions("planes/stereo", loops, stereo);
    forEachLength(benchmark::RegisterBenchmark("swresample/7.1", swresample, surround71));
    forEachLength(benchmark::RegisterBenchmark("swresample/5.1", swresample, surround51));
    forEachLength(benchmark::RegisterBenchmark("traffic/7.1", planeTraffic, 8));
    forEachLength(benchmark::RegisterBenchmark("traffic/stereo", planeTraffic, 2));
    benchmark::RegisterBenchmark("growth/7.1_module", call<Module::folding>, rt::chosenKernels, surround71)
        ->Arg(64)
        ->Arg(512)
        ->Arg(8192);
    return true;
}();

}  // namespace
