// A function that a module lacks costs what it does, and nothing else.
#include <gtest/gtest.h>

#include <cstring>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "engine/dsp_module_api.h"
#include "tests/engine/hosted_engine.h"
#include "tests/engine/planes.h"
#include "tests/modules/lacking/call_counts.h"
#include "tests/support/loaded_library.h"

namespace korva::engine {
namespace {

using framework::Held;
using test::hostedEngine;
using test::LoadedLibrary;

constexpr std::size_t countCount = sizeof(CallCounts) / sizeof(std::uint32_t);
using Counts = std::array<std::uint32_t, countCount>;

Counts countsOf(const LoadedLibrary& module) {
    Counts counts;
    std::memcpy(counts.data(), module.function<CallCountsOf>("callCounts")(), sizeof(counts));
    return counts;
}

std::string pathOf(const std::string& module) {
    return std::string(KORVA_TEST_MODULES) + '/' + module + KORVA_MODULE_SUFFIX;
}

/// What the operations of an engine gave.
struct Results {
    std::uint32_t inputFormat, outputFormat, captureFormat, parameter, data;
    bool initialized, hasHardware;

    bool operator==(const Results&) const = default;
};

/// Calls each operation once, and both of those that the audio thread has.
Results callAll(DspEngine& engine) {
    rt::EngineFormat one;
    rt::EngineFormat other;
    rt::EngineFormat third;
    Results results{};
    results.hasHardware = engine.isHardwareAvailable();
    results.inputFormat = engine.IsInputFormatSupported(one, other);
    results.outputFormat = engine.IsOutputFormatSupported(one, other);
    results.captureFormat = engine.IsCaptureFormatSupported(one);
    results.initialized = engine.Initialize(one, other, third);
    results.parameter = engine.SetParameter(-1, -18, -1, true);
    results.data = engine.SetGetData(-1, -32, {}, {});
    engine.Clear(-1);
    engine.WakeUp();
    engine.SetInputGain(1.0F);
    auto block = test::Planes(0.0F).block<rt::DspBlock>(1);
    engine.Process(&block);
    engine.Capture(&block);
    engine.Uninitialize();
    return results;
}

constexpr Results nothing{};
constexpr Results whatTheModuleGives{2, 3, 4, 5, 6, true, true};
// In the order of the exports, then entries 11 to 13; the exports of the first two are never called.
constexpr Counts allCalls = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 1, 1, 1};
constexpr Counts noCalls{};

enum Place : std::size_t {
    inputFormatPlace = 2,
    outputFormatPlace,
    captureFormatPlace,
    initializePlace,
    parameterPlace = 8,
    dataPlace,
    processPlace = 12,
    capturePlace,
    entryProcessPlace,
    entryCapturePlace,
};

std::string shortName(std::size_t place) {
    return std::string(dspModuleExports[place]).substr(std::strlen("ZRDSPAPI_"));
}

class LackingModule : public testing::TestWithParam<std::size_t> {};
INSTANTIATE_TEST_SUITE_P(EachExport, LackingModule, testing::Range<std::size_t>(1, dspModuleExports.size()),
                         [](const auto& place) { return shortName(place.param); });

TEST_P(LackingModule, DoesNothingAtThatOneOperation) {
    const std::size_t lacks = GetParam();
    const std::string name = "lacking_" + shortName(lacks);
    const LoadedLibrary module(pathOf(name));

    Results results{};
    {
        const Held<DspEngine> engine = hostedEngine({name}, KORVA_TEST_MODULES);
        ASSERT_TRUE(engine->hasInstance());
        results = callAll(*engine);
    }

    Counts counts = allCalls;
    counts[lacks] = 0;
    counts[entryProcessPlace] = lacks == processPlace ? 0 : 1;
    counts[entryCapturePlace] = lacks == capturePlace ? 0 : 1;
    EXPECT_EQ(countsOf(module), counts);
    Results given = whatTheModuleGives;
    given.inputFormat = lacks == inputFormatPlace ? 0 : given.inputFormat;
    given.outputFormat = lacks == outputFormatPlace ? 0 : given.outputFormat;
    given.captureFormat = lacks == captureFormatPlace ? 0 : given.captureFormat;
    given.initialized = lacks != initializePlace;
    given.parameter = lacks == parameterPlace ? 0 : given.parameter;
    given.data = lacks == dataPlace ? 0 : given.data;
    EXPECT_EQ(results, given);
}

TEST(WholeModule, HasEachFunctionCalledOnceButProcessAndCaptureThroughTheTableOnly) {
    const LoadedLibrary module(pathOf("lacking_nothing"));
    { EXPECT_EQ(callAll(*hostedEngine({"lacking_nothing"}, KORVA_TEST_MODULES)), whatTheModuleGives); }

    EXPECT_EQ(countsOf(module), allCalls);
}

TEST(ModuleWithoutCreate, StaysLoadedAndIsNeverCalled) {
    const std::string name = "lacking_Create";
    {
        const Held<DspEngine> engine = hostedEngine({name, "lacking_nothing"}, KORVA_TEST_MODULES);
        EXPECT_FALSE(engine->hasInstance());
        EXPECT_TRUE(test::isLoaded(pathOf(name)));
        EXPECT_FALSE(test::isLoaded(pathOf("lacking_nothing")));
        EXPECT_EQ(callAll(*engine), nothing);
        EXPECT_EQ(countsOf(LoadedLibrary(pathOf(name))), noCalls);
    }
    EXPECT_FALSE(test::isLoaded(pathOf(name)));
}

TEST(ModuleThatCreatesNothing, StaysLoadedAndIsNotCalledAgain) {
    const std::string name = "creating_null";
    const LoadedLibrary module(pathOf(name));
    {
        const Held<DspEngine> engine = hostedEngine({name}, KORVA_TEST_MODULES);
        EXPECT_FALSE(engine->hasInstance());
        EXPECT_EQ(callAll(*engine), nothing);
    }

    Counts counts{};
    counts[0] = 1;
    EXPECT_EQ(countsOf(module), counts);
}

TEST(ModuleThatCreatesNothing, IsUnloadedAtTheClose) {
    const std::string name = "creating_null";
    {
        const Held<DspEngine> engine = hostedEngine({name}, KORVA_TEST_MODULES);
        EXPECT_TRUE(test::isLoaded(pathOf(name)));
    }
    EXPECT_FALSE(test::isLoaded(pathOf(name)));
}

TEST(ModuleApi, BindsNothingOfALibraryThatCannotCreate) {
    const auto without = platform::ModuleLibrary::load(pathOf("lacking_Create"));
    ASSERT_TRUE(without);
    const DspModuleApi none = bindDspModuleApi(without);
    EXPECT_EQ(none.Free, nullptr);
    EXPECT_EQ(none.Process, nullptr);

    const auto whole = platform::ModuleLibrary::load(pathOf("lacking_nothing"));
    const DspModuleApi all = bindDspModuleApi(whole);
    EXPECT_NE(all.Create, nullptr);
    EXPECT_NE(all.Capture, nullptr);

    EXPECT_EQ(bindDspModuleApi(platform::ModuleLibrary()).Create, nullptr);
}

TEST(LeaningModule, IsNotTakenToExportWhatALibraryThatItNeedsExports) {
    const LoadedLibrary support(KORVA_LEANING_SUPPORT);
    const auto foreignCalls = support.function<std::uint32_t()>("foreignCalls");
    const Held<DspEngine> engine = hostedEngine({"leaning"}, KORVA_TEST_MODULES);
    ASSERT_TRUE(engine->hasInstance());

    Results expected{};
    expected.hasHardware = true;
    EXPECT_EQ(callAll(*engine), expected);
    EXPECT_EQ(foreignCalls(), 0U);
}

}  // namespace
}  // namespace korva::engine
