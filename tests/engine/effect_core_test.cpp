// The whole way, from an endpoint's identifier to a module that plays, and back.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/effect_rig.h"

namespace korva::engine {
namespace {

using test::EffectRig;

TEST(EffectCore, AnIdentifierLeadsToAModuleThatPlays) {
    EffectRig rig;
    rig.install({.engineId = test::thirdEngine});
    rig.begin();
    EXPECT_EQ(rig.newCalls(), (std::vector<std::string>{"Load", "Create"}));
    rig.lock();
    EXPECT_EQ(rig.newCalls().front(), "Initialize");
    EXPECT_EQ(rig.play(std::vector<float>(960, 0.5f)), std::vector<float>(960, 0.25f));
    rig.unlock();
    EXPECT_EQ(rig.newCalls(), (std::vector<std::string>{}));
    rig.close();
    EXPECT_EQ(rig.newCalls(), (std::vector<std::string>{"Uninitialize", "Free", "Unload"}));
}

}  // namespace
}  // namespace korva::engine
