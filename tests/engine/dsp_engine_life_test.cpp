// From the first holder of an engine to the last.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "engine/dsp_engine.h"
#include "framework/class_info.h"
#include "tests/engine/hosted_engine.h"
#include "tests/support/loaded_library.h"
#include "tests/support/own_folder.h"
#include "tests/support/recorded_calls.h"

namespace korva::engine {
namespace {

using framework::Held;
using framework::Ref;
using test::documentNaming;
using test::hostedEngine;
using test::isLoaded;
using test::OwnFolder;
using test::Recording;

using Names = std::vector<std::string>;

const std::filesystem::path recorder = KORVA_RECORDER_MODULE;

std::size_t countOf(const std::string& function, const Recording& recording) {
    return callsOf(function, recording.calls()).size();
}

TEST(DspEngineLife, EndsWithFreeAndThenTheLibrary) {
    const Recording recording;
    const OwnFolder folder;
    const auto file = folder.putLibrary(recorder, "module");
    {
        const Held<DspEngine> engine = hostedEngine({"module"}, folder.path());
        EXPECT_TRUE(isLoaded(file.string()));
        EXPECT_EQ(functionsOf(recording.calls()), (Names{"Load", "Create"}));
    }

    EXPECT_FALSE(isLoaded(file.string()));
    const auto calls = recording.calls();
    EXPECT_EQ(functionsOf(calls), (Names{"Load", "Create", "Free", "Unload"}));
    EXPECT_EQ(calls[2].instance, calls[1].instance);
}

TEST(DspEngineLife, OfANewOneIsOpenAndItsEventIsZero) {
    const OwnFolder folder;
    const Held<DspEngine> engine = hostedEngine({}, folder.path());

    EXPECT_TRUE(engine->isAlive.value());
    EXPECT_EQ(engine->engineEvent.value(), 0U);
}

TEST(DspEngineLife, OfAnEngineShowsItsEventAmongItsMembers) {
    const OwnFolder folder;
    const Held<DspEngine> engine = hostedEngine({}, folder.path());
    const auto& members = engine->getClassInfo()->observableOfName;
    ASSERT_TRUE(members.contains("engineEvent"));
    const auto& event =
        dynamic_cast<const framework::ValueMember<std::uint32_t>&>(*members.at("engineEvent"));

    event.setByValue(*engine, 5);

    EXPECT_EQ(engine->engineEvent.value(), 5U);
}

TEST(DspEngineLife, EndsAtTheLastHoldersDrop) {
    const Recording recording;
    const OwnFolder folder;
    folder.putLibrary(recorder, "module");
    Held<DspEngine> first = hostedEngine({"module"}, folder.path());
    Held<DspEngine> second = first;
    Held<DspEngine> third = second;

    first = nullptr;
    third = nullptr;
    EXPECT_EQ(countOf("Free", recording), 0U);
    EXPECT_TRUE(second->isAlive.value());

    second = nullptr;
    EXPECT_EQ(countOf("Free", recording), 1U);
}

/// What there was of an engine's module when `isAlive` changed.
struct SeenEnd {
    const Recording& recording;
    const std::string file;
    Names functions = {};
    bool wasLoaded = false;

    static void note(void* context, framework::ListenedTo&, framework::ActiveObject&, const void*, void*,
                     const void*, framework::Reason) {
        auto& seen = *static_cast<SeenEnd*>(context);
        seen.functions = functionsOf(seen.recording.calls());
        seen.wasLoaded = isLoaded(seen.file);
    }
};

TEST(DspEngineLife, IsSeenToEndBehindFreeAndAheadOfTheLibrarysEnd) {
    const Recording recording;
    const OwnFolder folder;
    SeenEnd seen{recording, folder.putLibrary(recorder, "module").string()};
    const Ref<DspEngine> engine = createDspEngine(documentNaming({"module"}), folder.path());
    engine->isAlive.subscribe(&seen, nullptr, &SeenEnd::note, framework::Position::last, false, false);

    engine->close();

    EXPECT_EQ(seen.functions, (Names{"Load", "Create", "Free"}));
    EXPECT_TRUE(seen.wasLoaded);
}

TEST(DspEngineLife, EndsOnceThoughItIsClosedAgain) {
    const Recording recording;
    const OwnFolder folder;
    const auto file = folder.putLibrary(recorder, "module");
    Ref<DspEngine> engine = createDspEngine(documentNaming({"module"}), folder.path());
    engine->holdClose();

    engine->close();
    EXPECT_EQ(countOf("Free", recording), 0U);
    engine->close();
    EXPECT_EQ(countOf("Free", recording), 1U);
    engine->close();
    engine->close();
    engine = nullptr;

    EXPECT_EQ(functionsOf(recording.calls()), (Names{"Load", "Create", "Free", "Unload"}));
    EXPECT_FALSE(isLoaded(file.string()));
}

TEST(DspEngineLife, EndsAtTheCloseThoughReferencesRemain) {
    const Recording recording;
    const OwnFolder folder;
    const auto file = folder.putLibrary(recorder, "module");
    const Ref<DspEngine> engine = createDspEngine(documentNaming({"module"}), folder.path());

    engine->close();

    EXPECT_FALSE(engine->isAlive.value());
    EXPECT_FALSE(isLoaded(file.string()));
    EXPECT_EQ(engine->document().platformModuleNames(), Names{"module"});
}

TEST(DspEngineLife, EndsWithTheLastReferenceThoughNobodyClosedIt) {
    const Recording recording;
    const OwnFolder folder;
    const auto file = folder.putLibrary(recorder, "module");

    { const Ref<DspEngine> engine = createDspEngine(documentNaming({"module"}), folder.path()); }

    EXPECT_EQ(functionsOf(recording.calls()), (Names{"Load", "Create", "Free", "Unload"}));
    EXPECT_FALSE(isLoaded(file.string()));
}

TEST(DspEngineLife, WithoutAnInstanceUnloadsAndFreesNothing) {
    const Recording recording("create=null");
    const OwnFolder folder;
    const auto file = folder.putLibrary(recorder, "module");
    {
        const Held<DspEngine> engine = hostedEngine({"module"}, folder.path());
        EXPECT_TRUE(isLoaded(file.string()));
    }

    EXPECT_EQ(functionsOf(recording.calls()), (Names{"Load", "Create", "Unload"}));
}

TEST(DspEngineLife, WithoutAModuleLeavesLibrariesOfOthersAlone) {
    const Recording recording;
    const OwnFolder folder;
    const auto file = folder.putLibrary(recorder, "module");
    const test::LoadedLibrary others(file.string());

    { const Held<DspEngine> engine = hostedEngine({"none"}, folder.path()); }

    EXPECT_TRUE(isLoaded(file.string()));
    EXPECT_EQ(functionsOf(recording.calls()), Names{"Load"});
}

TEST(DspEngineLife, OfTwoOfOneModuleKeepsItLoadedUntilTheSecondCloses) {
    const Recording recording;
    const OwnFolder folder;
    const auto file = folder.putLibrary(recorder, "module");
    Held<DspEngine> first = hostedEngine({"module"}, folder.path());
    Held<DspEngine> second = hostedEngine({"module"}, folder.path());
    first->WakeUp();
    second->WakeUp();

    const auto wakeUps = callsOf("WakeUp", recording.calls());
    ASSERT_EQ(wakeUps.size(), 2U);
    EXPECT_EQ(wakeUps[0].instance, 1);
    EXPECT_EQ(wakeUps[1].instance, 2);

    first = nullptr;
    EXPECT_TRUE(isLoaded(file.string()));
    second->WakeUp();
    second = nullptr;
    EXPECT_FALSE(isLoaded(file.string()));
    EXPECT_EQ(functionsOf(recording.calls()),
              (Names{"Load", "Create", "Create", "WakeUp", "WakeUp", "Free", "WakeUp", "Free", "Unload"}));
}

TEST(DspEngineLife, SharesItsDocument) {
    const OwnFolder folder;
    Ref<const EngineConfigDocument> document = documentNaming({"module"});
    const Held<DspEngine> engine = Held<DspEngine>::first(createDspEngine(document, folder.path()));
    document = nullptr;

    EXPECT_EQ(dumpEngineConfigDocument(engine->document()), R"({"PlatformModuleNames":["module"]})");
}

TEST(DspEngineLife, OfSomeHundredLeavesNothingLoaded) {
    const OwnFolder folder;
    const auto file = folder.putLibrary(recorder, "module");
    for (int round = 0; round < 300; ++round) {
        { ASSERT_TRUE(hostedEngine({"module"}, folder.path())->hasInstance()) << "round " << round; }
        ASSERT_FALSE(isLoaded(file.string())) << "round " << round;
    }
}

}  // namespace
}  // namespace korva::engine
