// The highest level of each plane since somebody looked.
#pragma once

#include <array>
#include <atomic>

#include "korva/dsp_module.h"

namespace equaliser {

using PlaneLevels = std::array<float, KORVA_PLANES>;

/// Written by the audio thread while the owner's reads: neither waits.
class PeakMeters {
public:
    /// Samples that are no numbers don't count.  [audio, rt]
    void note(const DspBlock& block);

    /// The levels, which begin anew.  [owner]
    PlaneLevels take();

private:
    std::array<std::atomic<float>, KORVA_PLANES> peaks{};
};

}  // namespace equaliser
