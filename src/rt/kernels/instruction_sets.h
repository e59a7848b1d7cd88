// The versions by instruction set, each from the source of its name.
#pragma once

#include "rt/kernels/kernels.h"

namespace korva::rt {

extern const Kernels plainKernels;
extern const Kernels sse2Kernels;
extern const Kernels avx2Kernels;
extern const Kernels avx512Kernels;

/// `Kernels::follow` of the plain version and of AVX2, which others use too.
void followPlain(const MeterLane* lanes, std::uint32_t count, const MeterRelease& release,
                 std::uint32_t frames) noexcept;
void followAvx2(const MeterLane* lanes, std::uint32_t count, const MeterRelease& release,
                std::uint32_t frames) noexcept;

}  // namespace korva::rt
