// What the host of a module costs: for a block, beside a call of the module's function; for an engine's life,
// beside the loader's own work on the same file.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

#include <array>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "engine/dsp_engine.h"
#include "engine/dsp_module_api.h"
#include "engine/module_records.h"
#include "framework/dispatcher.h"
#include "framework/ref.h"
#include "rt/engine_gate.h"
#include "rt/speakers.h"

namespace {

using namespace korva;
using Document = framework::Ref<const engine::EngineConfigDocument>;

const std::filesystem::path moduleFile = KORVA_IDLE_MODULE;

// Engines live on a dispatcher's thread, as in the object.
void onDispatcher(const std::function<void()>& action) {
    const framework::DispatcherUse worker =
        framework::Dispatcher::start(framework::RootType::of<engine::DspEngine>());
    worker->runSynchronously(action);
}

Document documentOfModule() {
    return Document::adopt(new engine::EngineConfigDocument(
        {{"EngineId", "{c9f475bc-13e4-6150-ae88-790995afc7c1}"},
         {"OutEndpointId", "{0.0.0.00000000}.{01234567-89ab-cdef-0123-456789abcdef}"},
         {"PlatformName", "Float"},
         {"PlatformModuleNames", {moduleFile.stem().string()}},
         {"PresetVersion", 1}}));
}

framework::Held<engine::DspEngine> newEngine(const Document& document) {
    auto held = framework::Held<engine::DspEngine>::first(
        engine::createDspEngine(document, moduleFile.parent_path()));
    if (!held->hasInstance()) {
        throw std::runtime_error("the module has made no instance");
    }
    return held;
}

struct Planes {
    std::array<std::array<float, rt::blockFrames>, rt::planeCount> samples{};
    std::array<float*, rt::planeCount> pointers{};
    rt::DspBlock block{
        .channels = pointers.data(), .inChannels = 2, .outChannels = 2, .frames = rt::blockFrames};

    Planes() {
        for (std::size_t i = 0; i < pointers.size(); ++i) {
            pointers[i] = samples[i].data();
        }
    }
};

void blockThroughHost(benchmark::State& state) {
    onDispatcher([&state] {
        const auto held = newEngine(documentOfModule());
        Planes planes;
        rt::EngineGate gate;
        rt::BlockProcessor* processor = held.get();
        for (auto _ : state) {
            benchmark::DoNotOptimize(processor);
            if (gate.enter()) {
                processor->Process(&planes.block);
            }
            gate.leave();
        }
    });
}

void blockByIndirectCall(benchmark::State& state) {
    const platform::ModuleLibrary library = platform::ModuleLibrary::load(moduleFile);
    DspInstance* const instance = engine::bindDspModuleApi(library).Create("{}", 2);
    Planes planes;
    auto* process = instance->table->process;
    for (auto _ : state) {
        benchmark::DoNotOptimize(process);
        process(instance, engine::asModuleRecord(planes.block));
    }
}

void lifeOfEngine(benchmark::State& state) {
    onDispatcher([&state] {
        const Document document = documentOfModule();
        for (auto _ : state) {
            const auto held = newEngine(document);
            benchmark::DoNotOptimize(held.get());
        }
    });
}

void workOfLoader(benchmark::State& state) {
    for (auto _ : state) {
        void* const library = dlopen(moduleFile.c_str(), RTLD_NOW | RTLD_LOCAL);
        for (const char* const name : engine::dspModuleExports) {
            void* const found = dlsym(library, name);
            if (found == nullptr) {
                throw std::runtime_error("the module lacks a function");
            }
            benchmark::DoNotOptimize(found);
        }
        dlclose(library);
    }
}

BENCHMARK(blockThroughHost)->Name("block/host");
BENCHMARK(blockByIndirectCall)->Name("block/call");
BENCHMARK(lifeOfEngine)->Name("life/engine");
BENCHMARK(workOfLoader)->Name("life/loader");

}  // namespace
