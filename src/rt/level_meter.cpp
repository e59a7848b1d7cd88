#include "rt/level_meter.h"

#include <algorithm>

#include "rt/kernels/kernels.h"
#include "rt/realtime.h"

namespace korva::rt {

MeterRelease MeterRelease::forSampleRate(std::uint32_t sampleRate) noexcept {
    const float ratio = 48000.0f / static_cast<float>(sampleRate);
    return {ratio * 0.00001f, ratio * 1.0003f};
}

KORVA_RT_CODE void MeterLanes::add(MeterState& state, const float* const* planes,
                                   const EngineFormat& layout) noexcept {
    const std::int32_t channels = std::clamp(layout.channelCount, 0, static_cast<std::int32_t>(planeCount));
    std::uint32_t followed = 0;
    for (std::int32_t c = 0; c < channels; ++c) {
        const std::uint8_t plane = layout.planeOfChannel[static_cast<std::size_t>(c)];
        shared = shared || (followed & (1u << plane)) != 0;
        followed |= 1u << plane;
        lanes[count++] = {planes[plane], &state.peak[plane], &state.slope[plane]};
    }
}

KORVA_RT_CODE void MeterLanes::follow(const MeterRelease& release, std::uint32_t frames,
                                      const Kernels& kernels) const noexcept {
    if (!shared) {
        kernels.follow(lanes.data(), count, release, frames);
        return;
    }
    for (std::uint32_t lane = 0; lane < count; ++lane) {
        kernels.follow(&lanes[lane], 1, release, frames);
    }
}

KORVA_RT_CODE void LevelMeter(MeterState& state, const MeterRelease& release, const float* const* planes,
                              std::uint32_t frames, const EngineFormat& layout) noexcept {
    MeterLanes lanes;
    lanes.add(state, planes, layout);
    lanes.follow(release, frames, chosenKernels());
}

}  // namespace korva::rt
