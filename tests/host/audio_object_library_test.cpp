#include "korva/host/audio_object_library.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "apo/effect_class.h"
#include "tests/host/expected_error.h"
#include "tests/support/loaded_library.h"
#include "tests/support/own_folder.h"

namespace korva::tool {
namespace {

using test::failsWith;

constexpr CLSID nobodys = {0xA7B1C5D2, 0x3F0E, 0x4C57, {0x91, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}};

void open(const std::filesystem::path& file) {
    const AudioObjectLibrary library(file);
}

TEST(AudioObjectLibrary, MakesAnObjectOfEachClass) {
    const AudioObjectLibrary library(KORVA_LIBRARY);
    for (const apo::EffectClass* const effect : apo::effectClasses) {
        const platform::Reference<IUnknown> object = library.createObject(effect->record.clsid);
        void* face = nullptr;
        EXPECT_EQ(object->QueryInterface(effect->ownInterface(), &face), published::ok);
        const platform::Reference<IUnknown> own(static_cast<IUnknown*>(face));
    }
}

TEST(AudioObjectLibrary, CanBeUnloadedUnlessAnObjectIsThere) {
    const AudioObjectLibrary library(KORVA_LIBRARY);
    EXPECT_TRUE(library.canUnload());
    {
        const auto object = library.createObject(apo::modeEffect.record.clsid);
        EXPECT_FALSE(library.canUnload());
    }
    EXPECT_TRUE(library.canUnload());
}

TEST(AudioObjectLibrary, IsUnloadedAtItsEnd) {
    open(KORVA_LIBRARY);
    EXPECT_FALSE(test::isLoaded(KORVA_LIBRARY));
}

TEST(AudioObjectLibrary, OfThisProjectLiesBesideItsPrograms) {
    EXPECT_TRUE(std::filesystem::equivalent(ownAudioObjectLibrary(), KORVA_LIBRARY));
}

TEST(AudioObjectLibrary, RefusesAClassThatItDoesNotHave) {
    const AudioObjectLibrary library(KORVA_LIBRARY);
    EXPECT_TRUE(failsWith([&] { static_cast<void>(library.createObject(nobodys)); },
                          {KORVA_LIBRARY, "{a7b1c5d2-3f0e-4c57-9111-223344556677}", "0x80040111"}));
    EXPECT_TRUE(library.canUnload());
}

TEST(AudioObjectLibrary, ThatIsMissingIsNamed) {
    const test::OwnFolder folder;
    const std::filesystem::path file = folder.path() / "none";
    EXPECT_TRUE(failsWith([&] { open(file); }, {"there is no library", file.string(), "--library"}));
}

TEST(AudioObjectLibrary, ThatIsNoneIsNamed) {
    const test::OwnFolder folder;
    const std::filesystem::path file = folder.path() / "text";
    std::ofstream(file) << "no library";
    EXPECT_TRUE(failsWith([&] { open(file); }, {file.string(), "can't be loaded"}));
    EXPECT_TRUE(failsWith([&] { open(folder.path()); }, {folder.path().string(), "can't be loaded"}));
}

TEST(AudioObjectLibrary, ThatLacksAnExportIsNamedWithIt) {
    EXPECT_TRUE(failsWith([] { open(KORVA_EMPTY_LIBRARY); }, {KORVA_EMPTY_LIBRARY, "DllGetClassObject"}));
}

TEST(AudioObjectLibrary, ObjectsNeedNoExportsForRegistration) {
    const AudioObjectLibrary library(KORVA_PLAYING_LIBRARY);
    EXPECT_FALSE(library.canUnload());
    EXPECT_TRUE(failsWith([&] { library.registerClasses(); }, {KORVA_PLAYING_LIBRARY, "DllRegisterServer"}));
    EXPECT_TRUE(
        failsWith([&] { library.unregisterClasses(); }, {KORVA_PLAYING_LIBRARY, "DllUnregisterServer"}));
}

TEST(AudioObjectLibrary, ThatRefusesRegistrationTellsWhy) {
    const AudioObjectLibrary library(KORVA_REFUSING_LIBRARY);
    EXPECT_TRUE(failsWith([&] { library.registerClasses(); }, {"0x80070005", "access denied"}));
    EXPECT_TRUE(failsWith([&] { library.unregisterClasses(); }, {"0x8007000e", "out of memory"}));
}

}  // namespace
}  // namespace korva::tool
