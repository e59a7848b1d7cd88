// How long it takes an effect core until it is ready, and until it plays, beside the parts of that work which
// nobody can leave out.
//
// A core is made for each measure, and goes after it: both are left out of the time.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench/engine/core_rig.h"
#include "bench/engine/noted_reads.h"
#include "bench/support/median.h"
#include "korva/dsp_module.h"
#include "params/parameter_set.h"
#include "platform/property_key.h"
#include "tests/support/engines.h"
#include "tests/support/loaded_library.h"

namespace {

using namespace korva;
using platform::RegistryKey;

constexpr std::size_t measuresOfIteration = 41;

template <class Work>
double secondsOf(const Work& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void showMedian(benchmark::State& state, const std::function<double()>& measure) {
    for (auto _ : state) {
        state.SetIterationTime(bench::medianOf(measuresOfIteration, measure));
    }
}

// The module's file is read as it is copied to its place, so it is in memory. A watcher lives meanwhile, as
// those of other instances do in an audio service: the registry's thread, which serves all of them, is there.
void identifierToEngine(benchmark::State& state) {
    const bench::CoreGround ground(test::thirdEngine, KORVA_KEEPING_MODULE);
    platform::RegistryWatch others;
    if (others.arm(ground.userSet()) != 0) {
        throw std::runtime_error("a key can't be watched");
    }
    showMedian(state, [&] {
        bench::CoreRig rig(ground);
        double seconds = 0.0;
        rig.on([&] { seconds = secondsOf([&] { rig.begin(); }); });
        return seconds;
    });
}

/// Keys of the registry that a core opens: each of the three sets by its store, and twice by the watch of it.
constexpr int keysOpened = 3 * (1 + 2);

void openKeys(const std::string& path) {
    for (int i = 0; i < keysOpened; ++i) {
        RegistryKey key;
        if (RegistryKey::root(platform::RegistryRoot::localMachine)
                .open(path, platform::RegistryAccess::read, key) != 0) {
            throw std::runtime_error("a key can't be opened");
        }
    }
}

void readProperties(const RegistryKey& set, const std::vector<PROPERTYKEY>& properties) {
    for (const PROPERTYKEY& property : properties) {
        platform::RegistryValue value;
        benchmark::DoNotOptimize(set.readValue(platform::KeyToText(property), value));
    }
}

/// A module's instance, by the loader alone.
class LoadedModule {
public:
    explicit LoadedModule(const std::string& file) : library(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
        constexpr std::string_view document = "{}";
        const auto create = reinterpret_cast<decltype(&ZRDSPAPI_Create)>(dlsym(library, "ZRDSPAPI_Create"));
        if (create == nullptr || create(document.data(), document.size()) == nullptr) {
            throw std::runtime_error("the module has made no instance");
        }
    }
    ~LoadedModule() { dlclose(library); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

private:
    void* const library;
};

void partsOfEngine(benchmark::State& state) {
    const bench::CoreGround ground(test::thirdEngine, KORVA_KEEPING_MODULE);
    const std::vector<PROPERTYKEY> properties = bench::propertiesReadBy(ground);
    const std::string file = ground.moduleOf(test::thirdEngine);
    showMedian(state, [&] {
        const framework::DispatcherUse worker = framework::Dispatcher::start();
        double seconds = 0.0;
        worker->runSynchronously([&] {
            std::unique_ptr<LoadedModule> module;
            std::shared_ptr<const params::ParameterSet> set;
            seconds = secondsOf([&] {
                openKeys(ground.userSetPath());
                readProperties(ground.userSet(), properties);
                set = params::BuildParameterSet(test::thirdEngine);
                module = std::make_unique<LoadedModule>(file);
            });
        });
        return seconds;
    });
}

void lockToBuffer(benchmark::State& state) {
    const bench::CoreGround ground(test::firstEngine, KORVA_KEEPING_MODULE);
    bench::StereoBuffer buffer;
    showMedian(state, [&] {
        bench::CoreRig rig(ground);
        double seconds = 0.0;
        rig.on([&] {
            rig.begin();
            seconds = secondsOf([&] {
                rig.lock();
                buffer.play(rig.core().realtime());
            });
        });
        return seconds;
    });
}

/// What a module is sent.
struct Sent {
    std::int32_t bank;
    std::int32_t id;
    std::span<const std::byte> bytes;
};

/// The bytes belong to the parameters.
std::vector<Sent> parametersToSend(const engine::ChunkReaders& readers) {
    std::vector<Sent> sent;
    for (const auto& reader : readers) {
        for (const params::Parameter* const parameter : reader->parameters()) {
            const std::span<const std::byte> bytes = parameter->effective.value().bytes();
            if (!bytes.empty()) {
                sent.push_back(
                    {static_cast<std::int32_t>(parameter->moduleIndex), parameter->paramId, bytes});
            }
        }
    }
    return sent;
}

/// The module's functions, with nothing between.
class BareModule final : public rt::BlockProcessor {
public:
    explicit BareModule(const std::string& file) : library(file) {}

    void start(std::span<const Sent> parameters) {
        EngineFormat in{3, 2, 48000, {0, 1}, {1, 2}};
        EngineFormat out = in;
        EngineFormat none{};
        initialize(instance, &in, &out, &none);
        for (const Sent& parameter : parameters) {
            setParameter(instance, parameter.bank, parameter.id, -1, parameter.bytes.data(),
                         static_cast<std::uint32_t>(parameter.bytes.size()));
        }
    }

    void Process(rt::DspBlock* block) noexcept KORVA_NONBLOCKING override {
        instance->table->process(instance, reinterpret_cast<DspBlock*>(block));
    }

private:
    test::LoadedLibrary library;
    decltype(&ZRDSPAPI_Initialize) initialize =
        library.function<decltype(ZRDSPAPI_Initialize)>("ZRDSPAPI_Initialize");
    decltype(&ZRDSPAPI_SetParameter) setParameter =
        library.function<decltype(ZRDSPAPI_SetParameter)>("ZRDSPAPI_SetParameter");
    DspInstance* const instance = library.function<decltype(ZRDSPAPI_Create)>("ZRDSPAPI_Create")("{}", 2);
};

void setStereo(rt::RtProcessor& processor) {
    rt::EngineFormat stereo;
    stereo.Assign(48000, 2, 3);
    processor.inFormat.set(stereo);
    processor.outFormat.set(stereo);
    processor.inputChannelCount.set(2);
    processor.outputChannelCount.set(2);
    processor.outputChannelMask.set(3);
}

// A core that was just built comes before the calls here as well: the caches are as it leaves them.
void callsToBuffer(benchmark::State& state) {
    const bench::CoreGround ground(test::firstEngine, KORVA_KEEPING_MODULE);
    bench::StereoBuffer buffer;
    showMedian(state, [&] {
        bench::CoreRig rig(ground);
        double seconds = 0.0;
        rig.on([&] {
            rig.begin();
            const auto processor = std::make_unique<rt::RtProcessor>();
            BareModule module(ground.moduleOf(test::firstEngine));
            setStereo(*processor);
            processor->exchangeEngine(&module);
            const std::vector<Sent> parameters = parametersToSend(*rig.core().chunkReaders.value());
            if (parameters.size() != 386) {
                throw std::runtime_error("the first layout has another count of parameters to send");
            }
            seconds = secondsOf([&] {
                module.start(parameters);
                buffer.play(*processor);
            });
        });
        return seconds;
    });
}

void registerCase(const char* name, void (*run)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, run)->Iterations(1)->UseManualTime();
}

[[maybe_unused]] const bool registered = [] {
    registerCase("ready/core", identifierToEngine);
    registerCase("ready/parts", partsOfEngine);
    registerCase("playing/core", lockToBuffer);
    registerCase("playing/calls", callsToBuffer);
    return true;
}();

}  // namespace
