#include "apo/effect_class.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace korva::apo {
namespace {

std::string textOf(const WCHAR (&field)[256]) {
    std::string text;
    for (std::size_t i = 0; i < 256 && field[i] != 0; ++i) {
        text += static_cast<char>(field[i]);
    }
    return text;
}

TEST(EffectClasses, AreRegisteredModeFirst) {
    ASSERT_EQ(effectClasses.size(), 3u);
    EXPECT_EQ(effectClasses[0], &modeEffect);
    EXPECT_EQ(effectClasses[1], &endpointEffect);
    EXPECT_EQ(effectClasses[2], &streamEffect);
}

TEST(EffectClasses, DifferInNameFlagsAndScript) {
    EXPECT_EQ(textOf(modeEffect.record.szFriendlyName), "KORVAMFX");
    EXPECT_EQ(textOf(endpointEffect.record.szFriendlyName), "KORVAEFX");
    EXPECT_EQ(textOf(streamEffect.record.szFriendlyName), "KORVASFX");
    EXPECT_EQ(modeEffect.record.Flags, 15u);
    EXPECT_EQ(endpointEffect.record.Flags, 15u);
    EXPECT_EQ(streamEffect.record.Flags, 13u);
    EXPECT_EQ(modeEffect.script, 110u);
    EXPECT_EQ(streamEffect.script, 111u);
    EXPECT_EQ(endpointEffect.script, 112u);
}

TEST(EffectClasses, TakeOneInputAndOneOutput) {
    for (const EffectClass* const effect : effectClasses) {
        EXPECT_EQ(effect->record.u32MinInputConnections, 1u);
        EXPECT_EQ(effect->record.u32MaxInputConnections, 1u);
        EXPECT_EQ(effect->record.u32MinOutputConnections, 1u);
        EXPECT_EQ(effect->record.u32MaxOutputConnections, 1u);
        EXPECT_EQ(effect->record.u32MajorVersion, 1u);
        EXPECT_EQ(effect->record.u32MinorVersion, 0u);
        EXPECT_EQ(effect->record.u32MaxInstances, 0xFFFFFFFFu);
        EXPECT_EQ(effect->record.u32NumAPOInterfaces, 1u);
        EXPECT_FALSE(textOf(effect->record.szCopyrightInfo).empty());
    }
}

}  // namespace
}  // namespace korva::apo
