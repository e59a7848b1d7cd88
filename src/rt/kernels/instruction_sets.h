// The versions by instruction set, each from the source of its name.
#pragma once

#include "rt/kernels/kernels.h"

namespace korva::rt {

extern const Kernels plainKernels;
extern const Kernels sse2Kernels;
extern const Kernels avx2Kernels;
extern const Kernels avx512Kernels;

/// `Kernels::follow` of AVX2.
void followAvx2(const MeterLane* lanes, std::uint32_t count, const MeterRelease& release,
                std::uint32_t frames) noexcept;

}  // namespace korva::rt
