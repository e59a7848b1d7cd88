#include "response.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace equaliser {
namespace {

/// Bands lie a quarter of a decade apart, and neighbours meet where each has half its gain in dB.
const double lowerEnd = std::pow(10.0, -0.125);

/// There is no bell at half the rate.
constexpr double highestShareOfRate = 0.45;

/// Where a frequency lies for a filter by the trapezoidal rule, to which half the rate is infinity.
double tuningOf(double hz, double sampleRate) {
    return std::tan(std::numbers::pi * hz / sampleRate);
}

/// Its gain at the centre, and half of it at the lower end; the upper end is where half the rate leaves it.
Band bell(double gainDb, double centreHz, double sampleRate) {
    if (gainDb == 0 || centreHz > highestShareOfRate * sampleRate) {
        return {};
    }
    const double tuning = tuningOf(centreHz, sampleRate);
    const double aboveLower = tuning / tuningOf(centreHz * lowerEnd, sampleRate);
    const double halfGain = std::pow(10.0, gainDb / 40);
    const double damping = (aboveLower - 1 / aboveLower) / halfGain;
    Band band;
    band.tuning = static_cast<float>(tuning);
    band.damping = static_cast<float>(damping);
    band.share = static_cast<float>(damping * (halfGain * halfGain - 1));
    return band;
}

}  // namespace

bool Response::changesNothing() const {
    return outputGain == 1 &&
           std::all_of(bands.begin(), bands.end(), [](const Band& band) { return band.isFlat(); });
}

Response responseOf(const Settings& settings, std::uint32_t sampleRate) {
    Response response;
    if (settings.isBypassed || settings.areEffectsDisabled) {
        return response;
    }
    for (std::size_t i = 0; i < bandCount; ++i) {
        const float asked = settings.centreHz[i];
        response.bands[i] = bell(settings.gainDb[i], asked == 0 ? standardCentreHz[i] : asked, sampleRate);
    }
    response.outputGain = static_cast<float>(std::pow(10.0, settings.outputDb / 20.0));
    return response;
}

}  // namespace equaliser
