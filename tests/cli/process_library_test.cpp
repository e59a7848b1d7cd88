#include <signal.h>

#include <algorithm>

#include "tests/cli/folder_watch.h"
#include "tests/cli/module_tool_test.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

namespace fs = std::filesystem;

class ProcessLibrary : public ModuleToolTest {
protected:
    /// The object's library, and a module if there is one, in a folder of their own.
    [[nodiscard]] std::string libraryElsewhere(const char* module = nullptr) const {
        fs::create_directory(path("elsewhere"));
        fs::copy_file(KORVA_LIBRARY, path("elsewhere/object.so"));
        if (module != nullptr) {
            fs::copy_file(module, path("elsewhere/PELLUX64.so"));
        }
        return path("elsewhere/object.so");
    }

    /// in.wav played by the library's own modules.
    [[nodiscard]] Launch besideLibrary(const std::vector<std::string>& options) const {
        std::vector<std::string> arguments = {"process", path("in.wav"), resultPath(), "--effect", "mfx"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        Launch launch = tool(arguments);
        launch.environment["KORVA_REGISTRY"] = registryPath();
        return launch;
    }

    /// A sound so long that the tool is in its middle when it is looked at.
    [[nodiscard]] Launch longPlay() const {
        writeLongSound(path("long.wav"), 900'000'000);
        Launch launch = playLaunch({"--preset", equaliserPreset, "--buffer", "1"});
        launch.arguments[1] = path("long.wav");
        return launch;
    }

    [[nodiscard]] std::vector<float> equalised() const {
        return alone(equaliserPreset).playInBuffers(sound.samples, 480);
    }
};

TEST_F(ProcessLibrary, ThatIsMissingIsNamed) {
    EXPECT_TRUE(isRefused({"--library", path("none.so"), "--preset", equaliserPreset},
                          {"there is no library", path("none.so")}));
    EXPECT_TRUE(failedWith(process(path("in.wav"), resultPath(), {"--library", path("none.so")}),
                           {"there is no library", path("none.so"), "--library"}));
    EXPECT_TRUE(failedWith(process(path("in.wav"), resultPath(), {"--library", ""}),
                           {"--library takes a file, not ''"}));
}

TEST_F(ProcessLibrary, ThatIsNoneIsNamed) {
    EXPECT_TRUE(failedWith(process(path("in.wav"), resultPath(), {"--library", path("in.wav")}),
                           {path("in.wav"), "can't be loaded as a library"}));
    EXPECT_TRUE(failedWith(process(path("in.wav"), resultPath(), {"--library", path("result")}),
                           {path("result"), "can't be loaded as a library"}));
}

TEST_F(ProcessLibrary, ThatLacksAnExportIsNamedWithIt) {
    EXPECT_TRUE(
        failedWith(process(path("in.wav"), resultPath(), {"--library", KORVA_EXAMPLE_MODULES "/minimal.so"}),
                   {"minimal.so", "no library of audio objects", "DllGetClassObject"}));
}

TEST_F(ProcessLibrary, ThatHasNoSuchClassIsNamedWithTheResult) {
    EXPECT_TRUE(failedWith(process(path("in.wav"), resultPath(), {"--library", KORVA_REFUSING_LIBRARY}),
                           {KORVA_REFUSING_LIBRARY, "makes no object", "0x80040111"}));
    EXPECT_TRUE(namesIn(path("result")).empty());
}

TEST_F(ProcessLibrary, MayLieElsewhere) {
    EXPECT_TRUE(
        sameBits(played({"--preset", equaliserPreset, "--library", libraryElsewhere()}), equalised()));
}

TEST_F(ProcessLibrary, MayBeNamedFromWhereTheUserIs) {
    const std::string library = fs::relative(libraryElsewhere(KORVA_EXAMPLE_MODULES "/PELLUX64.so")).string();
    EXPECT_TRUE(
        succeededQuietly(run(besideLibrary({"--quiet", "--preset", equaliserPreset, "--library", library}))));
    EXPECT_TRUE(sameBits(readSound(resultPath()).samples, equalised()));
}

TEST_F(ProcessLibrary, HasItsModulesBesideIt) {
    const std::string library = libraryElsewhere(KORVA_EXAMPLE_MODULES "/PELLUX64.so");
    const Outcome outcome = run(besideLibrary({"--json", "--preset", equaliserPreset, "--library", library}));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    const Json json = Json::parse(outcome.output);
    EXPECT_EQ(json["library"], library);
    EXPECT_EQ(json["moduleFolder"], path("elsewhere"));
    EXPECT_EQ(json["engine"]["loaded"], true);
    EXPECT_TRUE(sameBits(readSound(resultPath()).samples, equalised()));
}

TEST_F(ProcessLibrary, WithoutAModuleBesideItNamesThatPlace) {
    const Outcome outcome =
        run(besideLibrary({"--preset", equaliserPreset, "--library", libraryElsewhere()}));
    EXPECT_TRUE(failedWith(outcome, {"there is no module", path("elsewhere/PELLUX64.so"), "--module-dir"}));
}

TEST_F(ProcessLibrary, AFolderOfModulesMayHaveALibraryOfThatName) {
    const std::string modules = recorderFolder();
    writeBytes(path("modules/") + fs::path(KORVA_LIBRARY).filename().string(), "no library");
    const Recording recording;
    const Json json = report({"--preset", equaliserPreset, "--module-dir", modules});
    EXPECT_EQ(json["library"], KORVA_LIBRARY);
    EXPECT_EQ(callsOf("Create", recording.calls()).size(), 1U);
}

TEST_F(ProcessLibrary, AModuleFindsTheLibraryThatItNeedsInItsFolder) {
    fs::create_directory(path("modules"));
    fs::copy_file(KORVA_TEST_MODULES "/neighbour.so", path("modules/PELLUX64.so"));
    const std::vector<std::string> options = {"--preset", equaliserPreset, "--module-dir", path("modules")};
    EXPECT_TRUE(isRefused(options, {"PELLUX64.so", "can't be loaded"}));
    fs::copy_file(KORVA_LEANING_SUPPORT, path("modules") / fs::path(KORVA_LEANING_SUPPORT).filename());
    EXPECT_EQ(report(options)["engine"]["loaded"], true);
}

TEST_F(ProcessLibrary, TheThirdGenerationOfTheRecordGivesTheSameSamples) {
    for (const char* const generation : {"2", "3"}) {
        EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--generation", generation}), equalised()))
            << generation;
    }
    EXPECT_TRUE(succeededQuietly(process(path("in.wav"), resultPath(), {"--generation", "3"})));
    EXPECT_TRUE(sameBits(readSound(resultPath()).samples, sound.samples));
}

TEST_F(ProcessLibrary, AnotherGenerationIsRefused) {
    for (const char* const generation : {"1", "4", "", "2.0", "two"}) {
        EXPECT_TRUE(failedWith(process(path("in.wav"), resultPath(), {"--generation", generation}),
                               {"--generation takes 2 or 3", generation}));
    }
}

TEST_F(ProcessLibrary, InPlaceTheModuleGivesWhatItGivesAlone) {
    EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--effect", "sfx"}), equalised()));
    EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset, "--effect", "efx", "--buffer", "1000000"}),
                         alone(equaliserPreset).playInBuffers(sound.samples, 1'000'000)));
}

// Another mask of as many channels is another format: one buffer for each side.
TEST_F(ProcessLibrary, BetweenTwoBuffersAModuleGivesWhatItGivesInOne) {
    const Recording recording;
    const std::string modules = recorderFolder();
    std::vector<float> half;
    std::ranges::transform(sound.samples, std::back_inserter(half), [](float s) { return s * 0.5F; });
    const std::vector<std::string> options = {"--preset", equaliserPreset, "--module-dir", modules};
    EXPECT_TRUE(sameBits(played(options), half));
    std::vector<std::string> apart = options;
    apart.insert(apart.end(), {"--output-layout", "0xC0"});  // front left and right of centre
    EXPECT_TRUE(sameBits(played(apart), half));
}

TEST_F(ProcessLibrary, AModuleThatPassesTheSoundIsNotTakenForOneWithoutAnInstance) {
    const Recording recording("factor=1");
    EXPECT_EQ(report({"--preset", file(presetJson(thirdEngine, "")), "--module-dir",
                      recorderFolder()})["engine"]["loaded"],
              true);
}

TEST_F(ProcessLibrary, LinksGoWhenASignalEndsTheWork) {
    FolderWatch watch(path("result"));
    ChildProcess child(longPlay());
    EXPECT_TRUE(watch.waitForName().starts_with(".korva-"));
    EXPECT_EQ(namesIn(temporaryFolder).size(), 1U);
    child.send(SIGINT);
    EXPECT_EQ(child.wait().exitCode, 128 + SIGINT);
    EXPECT_TRUE(namesIn(temporaryFolder).empty());
    EXPECT_TRUE(fs::exists(KORVA_EXAMPLE_MODULES "/PELLUX64.so"));
}

TEST_F(ProcessLibrary, AToolThatIsKilledLeavesLinksThatHarmNobody) {
    FolderWatch watch(path("result"));
    ChildProcess child(longPlay());
    EXPECT_TRUE(watch.waitForName().starts_with(".korva-"));
    child.send(SIGKILL);
    EXPECT_EQ(child.wait().signal, SIGKILL);
    const std::vector<std::string> left = namesIn(temporaryFolder);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_TRUE(left[0].starts_with("korva-modules-"));
    EXPECT_TRUE(sameBits(played({"--preset", equaliserPreset}), equalised()));
    EXPECT_EQ(namesIn(temporaryFolder), left);
}

}  // namespace
}  // namespace korva::test
