// What effect cores take of memory, each with the first layout, locked and played for a second; the module
// isn't counted, nor is what is below `new`.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <deque>
#include <vector>

#include "engine/effect_core.h"
#include "tests/support/allocation_count.h"
#include "tests/support/effect_rig.h"
#include "tests/support/own_folder.h"

namespace korva::engine {
namespace {

using framework::Held;

constexpr int liveOnes = 200;
constexpr int buffersOfSecond = 100;
constexpr std::uint64_t mebibyte = 1 << 20;

/// A place for cores, which live on the rig's thread. The rig's own core does nothing.
class CoreMemory : public testing::Test {
protected:
    CoreMemory() {
        modules.putLibrary(KORVA_MINIMAL_MODULE, "TANMER64");
        rig.install({.engineId = test::firstEngine});
    }

    void TearDown() override { closeAll(); }

    void addPlayingOne() {
        rig.on([this] {
            cores.push_back(Held<EffectCore>::first(framework::create<EffectCore>(2U, surroundings())));
            EffectCore& core = *cores.back();
            core.endpointIdStrW.set(platform::toWide(rig.endpoint.id()));
            published::APO_CONNECTION_DESCRIPTOR* const connections[] = {stereo.get()};
            core.lockForProcess(connections, connections);
            EXPECT_TRUE(core.dspEngine.value() && core.dspEngine.value()->hasInstance());
            EXPECT_EQ(core.presetLoadCount.value(), 1U);
        });
        playASecond(cores.back()->realtime());
    }
    void closeAll() {
        rig.on([this] { cores.clear(); });
        rig.settle();
    }

    /// What one more takes.
    std::uint64_t bytesOfOne() {
        const std::uint64_t before = test::bytesInUse();
        addPlayingOne();
        return test::bytesInUse() - before;
    }

    std::deque<Held<EffectCore>> cores;  // the rig's thread only

private:
    Surroundings surroundings() {
        return {.moduleFolder = modules.path(), .systemSuppliesStores = false, .newDeviceEnumerator = [this] {
                    return framework::Ref<IMMDeviceEnumerator>(rig.devices);
                }};
    }

    static void playASecond(rt::RtProcessor& processor) {
        std::array<float, 960> input{};
        std::array<float, 960> output{};
        published::APO_CONNECTION_PROPERTY in = {reinterpret_cast<UINT_PTR>(input.data()), 480,
                                                 published::BUFFER_VALID,
                                                 published::connectionPropertySignature};
        published::APO_CONNECTION_PROPERTY out = in;
        out.pBuffer = reinterpret_cast<UINT_PTR>(output.data());
        published::APO_CONNECTION_PROPERTY* const inputs[] = {&in};
        published::APO_CONNECTION_PROPERTY* const outputs[] = {&out};
        for (int i = 0; i < buffersOfSecond; ++i) {
            processor.Process(1, inputs, 1, outputs, 2);
        }
    }

    test::LockedConnection stereo{test::StreamFormat{}};
    test::OwnFolder modules;

protected:
    test::EffectRig rig;  // the first to go: its thread has the cores
};

TEST_F(CoreMemory, OfOneWithTheFirstLayoutIsAtMostTwoMebibytes) {
    const std::uint64_t bytes = bytesOfOne();
    EXPECT_GT(bytes, mebibyte / 4);  // 401 parameters, the least that there is to count
    EXPECT_LE(bytes, 2 * mebibyte);
}

// Tables that all of them share are doubled as they grow: a twentieth covers that.
TEST_F(CoreMemory, OfManyIsThatOfAsManySingleOnesAndGoesWithThem) {
    addPlayingOne();
    closeAll();
    const std::uint64_t before = test::bytesInUse();
    const std::uint64_t single = bytesOfOne();
    closeAll();
    while (cores.size() < liveOnes) {
        addPlayingOne();
    }
    EXPECT_LE(test::bytesInUse() - before, liveOnes * single * 21 / 20);
    closeAll();
    EXPECT_LE(test::bytesInUse(), before + single / 2);
}

}  // namespace
}  // namespace korva::engine
