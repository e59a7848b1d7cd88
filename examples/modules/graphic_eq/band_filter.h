// The filters' loop over samples, in a version for each instruction set.
#pragma once

#include <cstddef>

#include "frames.h"
#include "response.h"

namespace equaliser {

/// A band's numbers as the loop uses them.
struct Coefficients {
    explicit Coefficients(const Band& band)
        : ofState(2 / (1 + band.tuning * (band.tuning + band.damping))),
          ofInput(band.tuning * ofState),
          tuning(band.tuning),
          halfShare(band.share / 2) {}
    Coefficients() = default;

    float ofState = 0;
    float ofInput = 0;
    float tuning = 0;
    float halfShare = 0;
};

/// What a band remembers of each plane: its two integrators. Small steps are added to a sum there, which is
/// why this form is exact at low frequencies in 32 bits, where one of past samples is not.
struct BandState {
    Frame first{};
    Frame second{};
};

/// A band of those that run one after the other.
struct RunningBand {
    Coefficients coefficients;
    BandState* state = nullptr;
};

/// Sends `count` frames through `bandsRunning` bands, then multiplies them by `outputGain`. What is no sample
/// (no number, infinite, or more than 2^20 times full scale) is silence to it: whatever comes, the states
/// stay finite, and a plane never reaches another.  [audio, rt]
using BandFilter = void (*)(const RunningBand* bands, std::size_t bandsRunning, float outputGain,
                            Frame* frames, std::size_t count);

void filterBandsSse2(const RunningBand* bands, std::size_t bandsRunning, float outputGain, Frame* frames,
                     std::size_t count);
/// Null if it was compiled without these instructions.
[[nodiscard]] BandFilter bandFilterAvx2();

/// The fastest that this processor can run. Versions differ in their last bits.
[[nodiscard]] BandFilter fastestBandFilter();

}  // namespace equaliser
