// What a core takes in of the records of initialisation. The whole object takes them in tests/system.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "engine/effect_core.h"
#include "params/effect_keys.h"
#include "platform/published/audio_object_records.h"
#include "platform/published/results.h"
#include "tests/support/effect_rig.h"
#include "tests/support/memory_property_store.h"

namespace korva::engine {
namespace {

using published::APOInitSystemEffects2;
using test::EffectRig;
using test::MemoryPropertyStore;

namespace processing_mode = published::processing_mode;

/// A record of the second generation that nothing is wrong with but what a test changes.
struct Record {
    framework::Ref<MemoryPropertyStore> properties = MemoryPropertyStore::make();
    framework::Ref<MemoryPropertyStore> effectsProperties = MemoryPropertyStore::make();
    APOInitSystemEffects2 record{};

    explicit Record(const GUID& mode) {
        record.pAPOEndpointProperties = properties.get();
        record.pAPOSystemEffectsProperties = effectsProperties.get();
        record.AudioProcessingMode = mode;
    }

    HRESULT give(EffectRig& rig) {
        std::vector<BYTE> bytes(sizeof(record) + 1);
        std::memcpy(bytes.data() + 1, &record, sizeof(record));  // a host's record may lie anywhere
        HRESULT result = published::unspecifiedFailure;
        rig.on([&] { result = rig.core().initializeApo(sizeof(record), bytes.data() + 1); });
        return result;
    }
};

bool isPassedThrough(EffectRig& rig) {
    return rig.core().realtime().passThrough.get();
}

TEST(EffectCoreInitialization, KeepsAModeThatItDoesntKnowAndRefusesIt) {
    EffectRig rig;
    EXPECT_EQ(Record(processing_mode::raw).give(rig), published::ok);
    constexpr GUID unknown = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    EXPECT_EQ(Record(unknown).give(rig), published::invalidArgument);
    EXPECT_EQ(rig.core().streamMode(), unknown);
    EXPECT_TRUE(isPassedThrough(rig));
}

TEST(EffectCoreInitialization, LetsRawStreamsPassAStreamAndAModeEffect) {
    for (const auto& [type, passes] : {std::pair{1u, true}, {2u, true}, {3u, false}}) {
        EffectRig rig({}, type);
        EXPECT_EQ(Record(processing_mode::raw).give(rig), published::ok);
        EXPECT_EQ(isPassedThrough(rig), passes) << type;
        EXPECT_EQ(Record(processing_mode::speech).give(rig), published::ok);
        EXPECT_FALSE(isPassedThrough(rig)) << type;
    }
}

TEST(EffectCoreInitialization, OfWhatIsNoEffectIsRefusedWithItsEndpointAndSwitchTaken) {
    EffectRig rig({}, 4);
    Record record(processing_mode::defaultMode);
    record.effectsProperties->putWord(params::disableSysFxKey, 1);
    EXPECT_EQ(record.give(rig), published::invalidArgument);
    EXPECT_TRUE(rig.core().sysFxDisabled.value());
    EXPECT_EQ(rig.core().streamMode(), processing_mode::defaultMode);
    EXPECT_FALSE(isPassedThrough(rig));
}

TEST(EffectCoreInitialization, ForgetsTheEndpointOfARecordWithoutDevices) {
    EffectRig rig;
    rig.begin();
    EXPECT_EQ(Record(processing_mode::media).give(rig), published::ok);
    EXPECT_TRUE(rig.core().endpointIdStrW.value().empty());
    EXPECT_FALSE(rig.core().device.value());
}

TEST(EffectCoreEffects, AreNoneOfWhatIsNoEffect) {
    EffectRig rig({}, 4);
    LPGUID ids = nullptr;
    UINT count = 99;
    rig.on([&] { EXPECT_EQ(rig.core().getEffectsList(&ids, &count, nullptr), published::ok); });
    EXPECT_EQ(ids, nullptr);
    EXPECT_EQ(count, 0u);
}

}  // namespace
}  // namespace korva::engine
