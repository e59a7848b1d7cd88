#include "rt/kernels/fold_loops.h"
#include "rt/kernels/instruction_sets.h"
#include "rt/kernels/plane_loops.h"
#include "rt/kernels/vector_avx512.h"
#include "rt/realtime.h"

namespace korva::rt {
namespace {

KORVA_RT_CODE void deinterleave(const float* input, std::uint32_t channels,
                                const std::uint8_t* planeOfChannel, float* const* wet, float* const* dry,
                                std::uint32_t frames) noexcept {
    deinterleaveWith<VectorAvx512>(input, channels, planeOfChannel, wet, dry, frames);
}

KORVA_RT_CODE void foldPlanes(float* const* planes, std::uint32_t inMask, std::uint32_t outMask,
                              std::uint32_t frames) noexcept {
    foldWith<VectorAvx512>(planes, inMask, outMask, frames);
}

KORVA_RT_CODE void interleave(const float* const* planes, const std::uint8_t* planeOfChannel,
                              std::uint32_t channels, float* output, std::uint32_t frames) noexcept {
    interleaveWith<VectorAvx512>(planes, planeOfChannel, channels, output, frames);
}

KORVA_RT_CODE void foldToStereo(const float* input, std::uint32_t channels, float* output,
                                std::uint32_t frames) noexcept {
    foldToStereoWith<VectorAvx512>(input, channels, output, frames);
}

}  // namespace

// The follower is AVX2's: comparing into mask registers would lengthen its chain.
constinit const Kernels avx512Kernels = {"avx512",   deinterleave, foldPlanes,
                                         followAvx2, interleave,   foldToStereo};

}  // namespace korva::rt
