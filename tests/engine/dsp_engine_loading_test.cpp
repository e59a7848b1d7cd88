// Which file becomes an engine's module, and what comes of none.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "engine/dsp_engine.h"
#include "tests/engine/hosted_engine.h"
#include "tests/engine/planes.h"
#include "tests/support/engines.h"
#include "tests/support/loaded_library.h"
#include "tests/support/own_folder.h"
#include "tests/support/recorded_calls.h"

namespace korva::engine {
namespace {

using framework::Held;
using test::documentNaming;
using test::hostedEngine;
using test::isLoaded;
using test::OwnFolder;
using test::Recording;

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

const fs::path recorder = KORVA_RECORDER_MODULE;

/// The modules that were loaded, in their order.
Names loadedModules(const Recording& recording) {
    Names names;
    for (const test::RecordedCall& call : callsOf("Load", recording.calls())) {
        names.push_back(call.module);
    }
    return names;
}

std::string contentsOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, const std::string& contents) {
    std::ofstream(path, std::ios::binary) << contents;
}

/// The system's name for a file of a module.
fs::path moduleFile(const OwnFolder& folder, const std::string& name) {
    return folder.path() / (name + recorder.extension().string());
}

/// The recording module, as if it were for a processor of 32 bits.
std::string narrowModule() {
    std::string contents = contentsOf(recorder);
    if (contents.starts_with("\x7F"
                             "ELF")) {
        contents[4] = 1;
    } else {
        const auto header = static_cast<unsigned char>(contents.at(0x3C)) +
                            256U * static_cast<unsigned char>(contents.at(0x3D));
        contents.replace(header + 4, 2, "\x4C\x01");
    }
    return contents;
}

/// The same with the first bytes of another system's libraries.
std::string foreignModule() {
    std::string contents = contentsOf(recorder);
    return contents.replace(0, 4,
                            contents.starts_with("MZ") ? "\x7F"
                                                         "ELF"
                                                       : "MZ\x90\x03");
}

void expectSecondNameIsTaken(const OwnFolder& folder) {
    const Recording recording;
    folder.putLibrary(recorder, "good");
    {
        const Held<DspEngine> engine = hostedEngine({"bad", "good"}, folder.path());
        EXPECT_TRUE(engine->hasInstance());
    }
    EXPECT_EQ(loadedModules(recording), Names{"good"});
    EXPECT_FALSE(hostedEngine({"bad"}, folder.path())->hasInstance());
}

TEST(DspEngineLoading, OfADocumentThatNamesNoModuleLoadsNone) {
    const Recording recording;
    const OwnFolder folder;
    folder.putLibrary(recorder, "");
    folder.putLibrary(recorder, "TANMER64");

    EXPECT_FALSE(hostedEngine({}, folder.path())->hasInstance());
    const auto second =
        createDspEngine(buildEngineConfigDocument(0, test::secondEngine, 7, "x"), folder.path());
    EXPECT_FALSE(second->hasInstance());
    const auto bare = createDspEngine(
        framework::Ref<const EngineConfigDocument>::adopt(new EngineConfigDocument(nlohmann::json::object())),
        folder.path());
    EXPECT_FALSE(bare->hasInstance());

    EXPECT_EQ(loadedModules(recording), Names{});
}

TEST(DspEngineLoading, TakesTheFirstNameThatLoadsAndTriesNoneBehindIt) {
    const Recording recording;
    const OwnFolder folder;
    for (const char* name : {"first", "second", "third"}) {
        folder.putLibrary(recorder, name);
    }

    { const auto engine = hostedEngine({"none", "nor this", "second", "first", "third"}, folder.path()); }

    EXPECT_EQ(loadedModules(recording), Names{"second"});
}

TEST(DspEngineLoading, TriesNoOtherNameWhereTheFirstMakesNoInstance) {
    const Recording recording("first.create=null");
    const OwnFolder folder;
    folder.putLibrary(recorder, "first");
    folder.putLibrary(recorder, "second");

    EXPECT_FALSE(hostedEngine({"first", "second"}, folder.path())->hasInstance());

    EXPECT_EQ(loadedModules(recording), Names{"first"});
}

TEST(DspEngineLoading, LooksInItsFolderAndNotInTheCurrentOne) {
    const Recording recording;
    const OwnFolder folder;
    const OwnFolder current;
    current.putLibrary(recorder, "module");
    const fs::path before = fs::current_path();
    fs::current_path(current.path());

    EXPECT_FALSE(hostedEngine({"module"}, folder.path())->hasInstance());
    EXPECT_FALSE(hostedEngine({"module"}, "")->hasInstance());
    EXPECT_FALSE(hostedEngine({"./module"}, "")->hasInstance());

    fs::current_path(before);
    EXPECT_EQ(loadedModules(recording), Names{});
}

TEST(DspEngineLoading, PutsANameWithAFolderUnderItsOwn) {
    const Recording recording;
    const OwnFolder folder;
    fs::create_directory(folder.path() / "deeper");
    folder.putLibrary(recorder, "deeper/module");

    EXPECT_TRUE(hostedEngine({"deeper/module"}, folder.path())->hasInstance());
    EXPECT_FALSE(hostedEngine({"module"}, folder.path())->hasInstance());
}

TEST(DspEngineLoading, LooksInAFolderWhateverItsName) {
    const OwnFolder folder;
    const fs::path strange = folder.path() / fs::path(u8"H\u00f6rer \u97f3 \U0001F50A");
    fs::create_directory(strange);
    fs::copy_file(recorder, strange / ("module" + recorder.extension().string()));

    EXPECT_TRUE(hostedEngine({"module"}, strange)->hasInstance());
}

TEST(DspEngineLoading, TakesANameWithARootAsItIs) {
    const Recording recording;
    const OwnFolder folder;
    const OwnFolder elsewhere;
    elsewhere.putLibrary(recorder, "module");

    EXPECT_TRUE(hostedEngine({(elsewhere.path() / "module").string()}, folder.path())->hasInstance());
}

TEST(DspEngineLoading, PutsTheSuffixBehindWhateverTheNameEndsIn) {
    const OwnFolder folder;
    const std::string suffix = recorder.extension().string();
    folder.putLibrary(recorder, "plain");
    folder.putLibrary(recorder, "dotted.name");

    EXPECT_TRUE(hostedEngine({"dotted.name"}, folder.path())->hasInstance());
    EXPECT_FALSE(hostedEngine({"plain" + suffix}, folder.path())->hasInstance());
}

TEST(DspEngineLoading, PassesOverAFolder) {
    const OwnFolder folder;
    fs::create_directory(moduleFile(folder, "bad"));
    expectSecondNameIsTaken(folder);
}

TEST(DspEngineLoading, PassesOverAnEmptyFile) {
    const OwnFolder folder;
    write(moduleFile(folder, "bad"), "");
    expectSecondNameIsTaken(folder);
}

TEST(DspEngineLoading, PassesOverAText) {
    const OwnFolder folder;
    write(moduleFile(folder, "bad"), std::string(100'000, 'x'));
    expectSecondNameIsTaken(folder);
}

TEST(DspEngineLoading, PassesOverALibraryOf32Bits) {
    const OwnFolder folder;
    write(moduleFile(folder, "bad"), narrowModule());
    expectSecondNameIsTaken(folder);
}

TEST(DspEngineLoading, PassesOverALibraryOfAnotherSystem) {
    const OwnFolder folder;
    write(moduleFile(folder, "bad"), foreignModule());
    expectSecondNameIsTaken(folder);
}

TEST(DspEngineLoading, PassesOverALibraryThatLacksWhatItNeeds) {
    const OwnFolder folder;
    const std::string needed = fs::path(KORVA_LEANING_SUPPORT).filename().string();
    folder.putLibraryWith(KORVA_LEANING_MODULE, "bad", needed, std::string(needed.size(), 'x'));
    expectSecondNameIsTaken(folder);
}

TEST(DspEngineLoading, OfNothingGivesAnEngineThatDoesNothing) {
    const OwnFolder folder;
    const Held<DspEngine> engine = hostedEngine({"none"}, folder.path());
    rt::EngineFormat format;
    rt::EngineFormat opposite;
    rt::EngineFormat capture;
    std::vector<std::byte> out(4, std::byte{9});

    EXPECT_FALSE(engine->hasInstance());
    EXPECT_FALSE(engine->isHardwareAvailable());
    EXPECT_EQ(engine->IsInputFormatSupported(format, opposite), 0U);
    EXPECT_EQ(engine->IsOutputFormatSupported(format, opposite), 0U);
    EXPECT_EQ(engine->IsCaptureFormatSupported(format), 0U);
    EXPECT_FALSE(engine->Initialize(format, opposite, capture));
    EXPECT_EQ(engine->SetParameter(-1, -18, -1, true), 0U);
    EXPECT_EQ(engine->SetGetData(-1, -32, {}, out), 0U);
    EXPECT_EQ(out, std::vector<std::byte>(4, std::byte{9}));
    engine->Clear(-1);
    engine->WakeUp();
    engine->SetInputGain(2.0F);
    engine->Uninitialize();
}

TEST(DspEngineLoading, OfNothingLeavesTheSoundAsItIs) {
    const OwnFolder folder;
    const Held<DspEngine> engine = hostedEngine({"none"}, folder.path());
    const test::Planes planes(0.75F);
    auto block = planes.block<rt::DspBlock>(512);

    engine->Process(&block);
    engine->Capture(&block);

    EXPECT_EQ(planes.samples, test::Planes(0.75F).samples);
}

TEST(DspEngineLoading, RaisesForADocumentThatIsNoTextAndKeepsNoLibrary) {
    const Recording recording;
    const OwnFolder folder;
    const fs::path file = folder.putLibrary(recorder, "TANMER64");

    EXPECT_THROW(static_cast<void>(createDspEngine(buildEngineConfigDocument(0, test::firstEngine, 7, "\xFF"),
                                                   folder.path())),
                 nlohmann::json::type_error);

    EXPECT_FALSE(isLoaded(file.string()));
    EXPECT_EQ(functionsOf(recording.calls()), (Names{"Load", "Unload"}));
}

TEST(DspEngineLoading, TellsWhatItWasBuiltFromWithoutAModuleToo) {
    const auto document = buildEngineConfigDocument(modeHardware, test::thirdEngine, 9, "x");
    const auto engine = createDspEngine(document, "/");

    EXPECT_EQ(&engine->document(), document.get());
    EXPECT_EQ(engine->platformName(), "iSST");
    EXPECT_EQ(engine->engineId(), test::thirdEngine);
    EXPECT_EQ(engine->presetVersion(), 9U);
    const auto bare = createDspEngine(documentNaming({}), "/");
    EXPECT_EQ(bare->platformName(), "");
    EXPECT_EQ(bare->engineId(), GUID{});
    EXPECT_EQ(bare->presetVersion(), 0U);
}

struct Pass {
    const char* name;
    GUID engine;
    std::uint32_t flags;
    const char* module;
    const char* text;
};

class DspEngineCreate : public testing::TestWithParam<Pass> {};

INSTANTIATE_TEST_SUITE_P(
    EveryPass, DspEngineCreate,
    testing::Values(Pass{"FirstFloat", test::firstEngine, 0, "TANMER64",
                         R"({"EngineId":"{14a6de13-1380-0e52-aee0-8803e93e40c8}","OutEndpointId":"öx",)"
                         R"("PlatformModuleNames":["TANMER64"],"PlatformName":"Float","PresetVersion":7})"},
                    Pass{"FirstHardware", test::firstEngine, modeHardware, "DRIVOL64",
                         R"({"EngineId":"{14a6de13-1380-0e52-aee0-8803e93e40c8}","Hardware":true,)"
                         R"("OutEndpointId":"öx","PlatformModuleNames":["DRIVOL64"],)"
                         R"("PlatformName":"iSST","PresetVersion":7})"},
                    Pass{"FirstSimulation", test::firstEngine, modeHardware | modeSimulation, "DRIVOL64",
                         R"({"EngineId":"{14a6de13-1380-0e52-aee0-8803e93e40c8}","Hardware":true,)"
                         R"("OutEndpointId":"öx","PlatformModuleNames":["DRIVOL64"],)"
                         R"("PlatformName":"iSST","PresetVersion":7,"Simulation":true})"},
                    Pass{"ThirdFloat", test::thirdEngine, 0, "PELLUX64",
                         R"({"EngineId":"{c9f475bc-13e4-6150-ae88-790995afc7c1}","OutEndpointId":"öx",)"
                         R"("PlatformModuleNames":["PELLUX64"],"PlatformName":"Float","PresetVersion":7})"},
                    Pass{"SecondFloat", test::secondEngine, 0, nullptr, nullptr},
                    Pass{"SecondHardware", test::secondEngine, modeHardware, nullptr, nullptr},
                    Pass{"ThirdHardware", test::thirdEngine, modeHardware, nullptr, nullptr},
                    Pass{"UnknownFloat", test::unknownEngine, 0, nullptr, nullptr}),
    [](const auto& pass) { return std::string(pass.param.name); });

TEST_P(DspEngineCreate, IsCalledOnceWithTheDocumentsTextAndNoTerminator) {
    const Pass& pass = GetParam();
    const Recording recording;
    const OwnFolder folder;
    for (const char* module : {"TANMER64", "DRIVOL64", "PELLUX64"}) {
        folder.putLibrary(recorder, module);
    }

    const auto engine =
        createDspEngine(buildEngineConfigDocument(pass.flags, pass.engine, 7, "öx"), folder.path());

    EXPECT_EQ(engine->hasInstance(), pass.module != nullptr);
    EXPECT_EQ(loadedModules(recording), pass.module == nullptr ? Names{} : Names{pass.module});
    Names texts;
    for (const test::RecordedCall& call : callsOf("Create", recording.calls())) {
        texts.push_back(call.text("text"));
    }
    EXPECT_EQ(texts, pass.text == nullptr ? Names{} : Names{pass.text});
}

}  // namespace
}  // namespace korva::engine
