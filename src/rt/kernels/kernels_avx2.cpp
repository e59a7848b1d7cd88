#include "rt/kernels/fold_loops.h"
#include "rt/kernels/instruction_sets.h"
#include "rt/kernels/meter_loops.h"
#include "rt/kernels/plane_loops.h"
#include "rt/kernels/vector_avx2.h"
#include "rt/kernels/vector_sse2.h"
#include "rt/realtime.h"

namespace korva::rt {
namespace {

KORVA_RT_CODE void deinterleave(const float* input, std::uint32_t channels,
                                const std::uint8_t* planeOfChannel, float* const* wet, float* const* dry,
                                std::uint32_t frames) noexcept {
    deinterleaveWith<VectorAvx2>(input, channels, planeOfChannel, wet, dry, frames);
}

KORVA_RT_CODE void foldPlanes(float* const* planes, std::uint32_t inMask, std::uint32_t outMask,
                              std::uint32_t frames) noexcept {
    foldWith<VectorAvx2>(planes, inMask, outMask, frames);
}

KORVA_RT_CODE void interleave(const float* const* planes, const std::uint8_t* planeOfChannel,
                              std::uint32_t channels, float* output, std::uint32_t frames) noexcept {
    interleaveWith<VectorAvx2>(planes, planeOfChannel, channels, output, frames);
}

KORVA_RT_CODE void foldToStereo(const float* input, std::uint32_t channels, float* output,
                                std::uint32_t frames) noexcept {
    foldToStereoWith<VectorAvx2>(input, channels, output, frames);
}

}  // namespace

KORVA_RT_CODE void followAvx2(const MeterLane* lanes, std::uint32_t count, const MeterRelease& release,
                              std::uint32_t frames) noexcept {
    if (frames == 0 || count == 0) {
        return;
    }
    if (count < leastLanesTogether) {
        followPlain(lanes, count, release, frames);
    } else if (count <= VectorSse2::width) {
        followTogether<VectorSse2, 1>(lanes, count, release, frames);
    } else if (count <= VectorAvx2::width) {
        followTogether<VectorAvx2, 1>(lanes, count, release, frames);
    } else {
        followTogether<VectorAvx2, 2>(lanes, count, release, frames);
    }
}

constinit const Kernels avx2Kernels = {"avx2",     deinterleave, foldPlanes,
                                       followAvx2, interleave,   foldToStereo};

}  // namespace korva::rt
