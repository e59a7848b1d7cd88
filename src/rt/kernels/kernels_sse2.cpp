#include "rt/kernels/fold_loops.h"
#include "rt/kernels/instruction_sets.h"
#include "rt/kernels/meter_loops.h"
#include "rt/kernels/plane_loops.h"
#include "rt/kernels/vector_sse2.h"
#include "rt/realtime.h"

namespace korva::rt {
namespace {

KORVA_RT_CODE void deinterleave(const float* input, std::uint32_t channels,
                                const std::uint8_t* planeOfChannel, float* const* wet, float* const* dry,
                                std::uint32_t frames) noexcept {
    deinterleaveWith<VectorSse2>(input, channels, planeOfChannel, wet, dry, frames);
}

KORVA_RT_CODE void foldPlanes(float* const* planes, std::uint32_t inMask, std::uint32_t outMask,
                              std::uint32_t frames) noexcept {
    foldWith<VectorSse2>(planes, inMask, outMask, frames);
}

KORVA_RT_CODE void follow(const MeterLane* lanes, std::uint32_t count, const MeterRelease& release,
                          std::uint32_t frames) noexcept {
    if (frames == 0) {
        return;
    }
    if (count < leastLanesTogether) {
        followPlain(lanes, count, release, frames);
        return;
    }
    switch ((count + VectorSse2::width - 1) / VectorSse2::width) {
        case 0:
            return;
        case 1:
            return followTogether<VectorSse2, 1>(lanes, count, release, frames);
        case 2:
            return followTogether<VectorSse2, 2>(lanes, count, release, frames);
        case 3:
            return followTogether<VectorSse2, 3>(lanes, count, release, frames);
        default:
            return followTogether<VectorSse2, 4>(lanes, count, release, frames);
    }
}

KORVA_RT_CODE void interleave(const float* const* planes, const std::uint8_t* planeOfChannel,
                              std::uint32_t channels, float* output, std::uint32_t frames) noexcept {
    interleaveWith<VectorSse2>(planes, planeOfChannel, channels, output, frames);
}

KORVA_RT_CODE void foldToStereo(const float* input, std::uint32_t channels, float* output,
                                std::uint32_t frames) noexcept {
    foldToStereoWith<VectorSse2>(input, channels, output, frames);
}

}  // namespace

constinit const Kernels sse2Kernels = {"sse2", deinterleave, foldPlanes, follow, interleave, foldToStereo};

}  // namespace korva::rt
