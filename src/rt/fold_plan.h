// Which planes are folded into which, for two speaker masks.
#pragma once

#include <array>
#include <cstdint>

#include "rt/speakers.h"

namespace korva::rt {

/// The folds of one pair of masks, gathered by destination. Destinations are never sources, so they may be
/// worked in any order; the sources of one stand in the order in which they are added.
struct FoldPlan {
    struct Source {
        float coefficient;
        std::uint32_t plane;
    };
    struct Destination {
        std::uint32_t plane;
        std::uint32_t sourceCount;  ///< 1 to 7.
        std::array<Source, planeCount - 1> sources;
    };
    std::uint32_t destinationCount;
    std::array<Destination, planeCount> destinations;  ///< Only the first `destinationCount` are filled.
};

/// Fills `plan`, which need not be initialised: it is made once for each block, so nothing is cleared that
/// is not read.  [any, rt]
void makeFoldPlan(std::uint32_t inMask, std::uint32_t outMask, FoldPlan& plan) noexcept;

}  // namespace korva::rt
