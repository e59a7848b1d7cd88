#include "korva/monitor/instance_view.h"

#include <gtest/gtest.h>

#include <span>

#include "korva/monitor/view_text.h"
#include "tests/support/own_registry.h"

namespace korva::tool {
namespace {

using platform::RegistryAccess;
using platform::RegistryKey;
namespace types = platform::registry_type;

class InstanceViewTest : public testing::Test {
protected:
    InstanceViewTest() {
        EXPECT_EQ(RegistryKey::root(platform::RegistryRoot::localMachine)
                      .create(registry.key() + "\\" + name, RegistryAccess::readWrite, key),
                  0);
    }
    ~InstanceViewTest() override {
        static_cast<void>(
            RegistryKey::root(platform::RegistryRoot::localMachine).deleteTree(registry.key() + "\\" + name));
    }
    void set(const char* valueName, std::uint32_t type, std::span<const std::byte> bytes) const {
        ASSERT_EQ(key.setValue(valueName, type, bytes), 0);
    }
    void set(const char* valueName, std::uint32_t number) const {
        set(valueName, types::dword, std::as_bytes(std::span(&number, 1)));
    }
    [[nodiscard]] InstanceView read() const {
        InstanceView view;
        EXPECT_EQ(readInstance(key, name, view), 0);
        return view;
    }

    const test::OwnRegistry registry;
    const std::string name = "instance";
    RegistryKey key;
};

TEST_F(InstanceViewTest, KnowsNothingOfAnEmptyKey) {
    const InstanceView view = read();
    EXPECT_EQ(view.name, name);
    EXPECT_EQ(view.effect, Reading<std::string>());
    EXPECT_EQ(view.load, Reading<std::uint32_t>());
    EXPECT_EQ(effectText(view), "-");
    EXPECT_TRUE(view.malformed.empty());
}

TEST_F(InstanceViewTest, TakesTextsAsBytesUpToTheZero) {
    set("APOTypeStr", types::string, std::as_bytes(std::span("SFX")));       // four bytes
    set("EndpointIdStrW", types::string, std::as_bytes(std::span("four")));  // five, no whole unit
    EXPECT_EQ(read().effect.value, "SFX");
    EXPECT_EQ(read().endpointId.value, "four");
}

TEST_F(InstanceViewTest, TellsChannelsAndMasksOfEachSideApart) {
    std::uint32_t number = 1;
    for (const char* const valueName :
         {"InputChannelCount", "InChannelMask", "OutputChannelCount", "OutChannelMask",
          "DSPInputChannelCount", "DSPInChannelMask", "DSPOutputChannelCount", "DSPOutChannelMask"}) {
        set(valueName, number++);
    }
    const InstanceView view = read();
    EXPECT_EQ(sideText(view.input), "1 ch 0x2");
    EXPECT_EQ(sideText(view.output), "3 ch 0x4");
    EXPECT_EQ(sideText(view.dspInput), "5 ch 0x6");
    EXPECT_EQ(sideText(view.dspOutput), "7 ch 0x8");
}

TEST_F(InstanceViewTest, NamesValuesOfWrongTypesAndSizes) {
    const std::array<std::byte, 33> bytes{};
    set("OutputLevelMeters", types::binary, bytes);
    set("SampleRate", types::qword, std::span(bytes).first(8));
    const InstanceView view = read();
    EXPECT_EQ(view.malformed, (std::vector<std::string>{"SampleRate", "OutputLevelMeters"}));
    EXPECT_EQ(numberText(view.sampleRate), "?");
    EXPECT_EQ(highestLevelText(view.meters[1]), "?");
}

TEST_F(InstanceViewTest, WritesVersionsAndLoads) {
    EXPECT_EQ(libraryVersionText({0x0002000100020011}), "2.1.2.17");
    EXPECT_EQ(libraryVersionText({0xFFFF000000000000}), "65535.0.0.0");
    EXPECT_EQ(moduleVersionText({0x00010002}), "0x00010002");
    EXPECT_EQ(loadText({7}), "0.7 %");
    EXPECT_EQ(loadText({1000}), "100.0 %");
}

TEST_F(InstanceViewTest, OfADeletedKeyIsLeftAsItWas) {
    ASSERT_EQ(
        RegistryKey::root(platform::RegistryRoot::localMachine).deleteTree(registry.key() + "\\" + name), 0);
    InstanceView view;
    view.name = "old";
    EXPECT_EQ(readInstance(key, name, view), platform::registry_result::keyDeleted);
    EXPECT_EQ(view.name, "old");
}

}  // namespace
}  // namespace korva::tool
