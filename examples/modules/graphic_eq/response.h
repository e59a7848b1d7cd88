// From what is asked for to what the filters are made of.
#pragma once

#include <array>
#include <cstdint>

#include "settings.h"

namespace equaliser {

/// One band: a second-order section in state-variable form, of which a share of the band-pass output is added
/// to the sound. Between any two such bands every mixture of their numbers is a stable filter too, so that a
/// band may be moved while sound runs.
struct Band {
    float tuning = 1;   ///< Above 0: tan(pi * centre / rate).
    float damping = 1;  ///< Above 0: one over the band's Q at the gain that it has.
    float share = 0;    ///< 0: the band does nothing.

    [[nodiscard]] bool isFlat() const { return share == 0; }
    bool operator==(const Band&) const = default;
};

/// All that shapes the sound.
struct Response {
    std::array<Band, bandCount> bands;
    float outputGain = 1;  ///< A factor.

    [[nodiscard]] bool changesNothing() const;
    bool operator==(const Response&) const = default;
};

/// The response that the settings ask for. A band whose centre lies above 0.45 of the rate is flat.
[[nodiscard]] Response responseOf(const Settings& settings, std::uint32_t sampleRate);

}  // namespace equaliser
