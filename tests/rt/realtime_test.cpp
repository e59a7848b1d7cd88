#include "rt/realtime.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstring>

#include "rt/channel_mixer.h"
#include "rt/direct_copy.h"
#include "rt/fold_plan.h"
#include "rt/gain_ramp.h"
#include "rt/kernels/kernels.h"
#include "rt/rt_processor.h"
#include "rt/sample_tap.h"
#include "rt/stereo_shapes.h"

namespace korva::rt {
namespace {

template <typename Function>
bool liesInRealtimeCode(Function* function) {
    const CodeRange range = realtimeCode();
    const auto address = std::bit_cast<std::uintptr_t>(function);
    const auto start = reinterpret_cast<std::uintptr_t>(range.start);
    return address >= start && address < start + range.size;
}

/// A pointer to an ordinary member function begins with the function's address.
template <typename Member>
bool memberLiesInRealtimeCode(Member member) {
    void (*function)() = nullptr;
    static_assert(sizeof(member) >= sizeof(function));
    std::memcpy(static_cast<void*>(&function), static_cast<const void*>(&member), sizeof(function));
    return liesInRealtimeCode(function);
}

void ordinaryFunction() {}

TEST(RealtimeCode, HasBothEnds) {
    const CodeRange range = realtimeCode();

    ASSERT_NE(range.start, nullptr);
    EXPECT_GT(range.size, 0u);
}

TEST(RealtimeCode, HoldsTheProcessingCallAndTheDirectCopy) {
    EXPECT_TRUE(memberLiesInRealtimeCode(&RtProcessor::Process));
    EXPECT_TRUE(liesInRealtimeCode(&directCopy));
    EXPECT_TRUE(liesInRealtimeCode(&copySamples));
}

TEST(RealtimeCode, HoldsTheStagesOfTheBus) {
    using Mix = void(DspBlock&, const EngineFormat&, const EngineFormat&) noexcept;
    using MixWith = void(DspBlock&, const EngineFormat&, const EngineFormat&, const Kernels&) noexcept;

    EXPECT_TRUE(liesInRealtimeCode(static_cast<Mix*>(&ChannelMixer)));
    EXPECT_TRUE(liesInRealtimeCode(static_cast<MixWith*>(&ChannelMixer)));
    EXPECT_TRUE(liesInRealtimeCode(&makeFoldPlan));
    EXPECT_TRUE(liesInRealtimeCode(&LevelMeter));
    EXPECT_TRUE(memberLiesInRealtimeCode(&MeterLanes::add));
    EXPECT_TRUE(memberLiesInRealtimeCode(&MeterLanes::follow));
    EXPECT_TRUE(liesInRealtimeCode(&GainRamp));
    EXPECT_TRUE(liesInRealtimeCode(&writeTap));
    EXPECT_TRUE(liesInRealtimeCode(&isStereoFold));
    EXPECT_TRUE(liesInRealtimeCode(&isApartOrInPlace));
    EXPECT_TRUE(liesInRealtimeCode(&chosenKernels));
}

TEST(RealtimeCode, HoldsEveryVersionOfTheLoops) {
    for (const Kernels* kernels : supportedKernels()) {
        SCOPED_TRACE(kernels->name);
        EXPECT_TRUE(liesInRealtimeCode(kernels->deinterleave));
        EXPECT_TRUE(liesInRealtimeCode(kernels->fold));
        EXPECT_TRUE(liesInRealtimeCode(kernels->follow));
        EXPECT_TRUE(liesInRealtimeCode(kernels->interleave));
        if (kernels->foldToStereo != nullptr) {
            EXPECT_TRUE(liesInRealtimeCode(kernels->foldToStereo));
        }
    }
}

TEST(RealtimeCode, HoldsNothingOfTheOwner) {
    EXPECT_FALSE(liesInRealtimeCode(&ordinaryFunction));
    EXPECT_FALSE(memberLiesInRealtimeCode(&RtProcessor::exchangeEngine));
    EXPECT_FALSE(memberLiesInRealtimeCode(&EngineGate::raise));
}

}  // namespace
}  // namespace korva::rt
