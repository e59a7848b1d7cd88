// What another effect, or another endpoint, takes over from the one before: nothing.
#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "params/effect_keys.h"
#include "tests/support/effect_rig.h"
#include "tests/support/wait_until.h"

namespace korva::engine {
namespace {

using test::EffectRig;

/// The bytes of the first parameter as the module gets them.
std::vector<std::byte> firstParameter(EffectRig& rig) {
    std::vector<std::byte> copy;
    rig.on([&] {
        const auto bytes = rig.core().chunkReaders.value()->front()->parameters().front()->effective.value();
        copy.assign(bytes.bytes().begin(), bytes.bytes().end());
    });
    return copy;
}

/// A preset whose first bytes are ones.
void setFirstChunk(EffectRig& rig, const GUID& fxId) {
    std::vector<std::byte> blob(8, std::byte{1});
    blob[2] = blob[3] = std::byte{0};
    rig.setBlob({fxId, params::effect_property::firstChunk}, blob);
}

TEST(EffectChange, AnotherEffectOfTheSameEngineBeginsWithTheDefaults) {
    EffectRig rig;
    setFirstChunk(rig, test::effectGuid(1));
    rig.install({.fxId = test::effectGuid(1), .engineId = test::thirdEngine});
    rig.begin();
    EXPECT_EQ(firstParameter(rig), std::vector{std::byte{1}});
    rig.install({.fxId = test::effectGuid(2), .engineId = test::thirdEngine});
    ASSERT_TRUE(test::waitUntil([&] { return rig.core().fxId.read() == test::effectGuid(2); }));
    EXPECT_EQ(firstParameter(rig), std::vector{std::byte{0}});
}

TEST(EffectChange, APresetThatIsDeletedStaysWithItsEffect) {
    EffectRig rig;
    setFirstChunk(rig, test::effectGuid(1));
    rig.install({.engineId = test::thirdEngine});
    rig.begin();
    rig.remove({test::effectGuid(1), params::effect_property::firstChunk});
    const std::vector<std::string> mark{"mark"};
    rig.setTexts(params::clientListKey, mark);
    ASSERT_TRUE(test::waitUntil([&] { return rig.core().hasClientList.read(); }));
    rig.settle();
    EXPECT_EQ(firstParameter(rig), std::vector{std::byte{1}});
}

}  // namespace
}  // namespace korva::engine
