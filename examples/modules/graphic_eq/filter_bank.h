// The way of the sound: twelve bands one after the other, and the output gain.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "band_filter.h"
#include "frames.h"
#include "glide.h"
#include "korva/dsp_module.h"

namespace equaliser {

/// The filters of all planes. Sound that nothing is asked of passes untouched to the bit, and any cut into
/// blocks gives the same bits.  [audio, rt]
class FilterBank {
public:
    /// Forgets the sound that went by; the response that is asked for holds at once.
    void clear();

    /// Takes over another response: at once if no sound went by since `clear`, else over `glideFrames`.
    void change(const Response& response, std::uint32_t glideFrames);

    void process(const DspBlock& block);

private:
    void run(Frame* frames, std::uint32_t count);
    void tune();

    const BandFilter filter = fastestBandFilter();
    Glide glide;
    bool hasSound = false;
    std::array<BandState, bandCount> states;
    std::array<RunningBand, bandCount>
        running;  ///< The first `runningCount` of them: those that are not flat.
    std::size_t runningCount = 0;
    Frames workspace;  ///< On the stack it would have no alignment on Windows.
};

}  // namespace equaliser
