#include "params/effect_keys.h"

#include <gtest/gtest.h>

#include "platform/property_key.h"

namespace korva::params {
namespace {

TEST(EffectKeys, EachPlaceOfAnEffectIsSelectedByAKeyOfItsOwn) {
    EXPECT_EQ(platform::KeyToText(selectionKey(EffectKind::stream)),
              "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},3");
    EXPECT_EQ(platform::KeyToText(selectionKey(EffectKind::mode)),
              "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},4");
    EXPECT_EQ(platform::KeyToText(selectionKey(EffectKind::endpoint)),
              "{6dcc1ac8-4a3c-4a98-a3a7-f967127d5763},5");
}

TEST(EffectKeys, AnEffectsOwnPropertiesHaveTheirNumbers) {
    EXPECT_EQ(effect_property::presetVersion, 0U);
    EXPECT_EQ(effect_property::modeFlags, 1U);
    EXPECT_EQ(effect_property::engineId, 2U);
    EXPECT_EQ(effect_property::firstChunk, 3000U);
}

}  // namespace
}  // namespace korva::params
