#include "response.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace equaliser {
namespace {

/// Bands that lie a quarter of a decade apart, and whose points of half the gain meet.
const double quality = std::pow(10.0, 0.125) / (std::pow(10.0, 0.25) - 1);

/// Nearer to half the rate a bell is squeezed out of shape.
constexpr double highestShareOfRate = 0.45;

/// A bell: its gain at the centre, 0 dB far away, and half the gain in dB at the ends of its bandwidth.
Band bell(double gainDb, double centreHz, double sampleRate) {
    if (gainDb == 0 || centreHz > highestShareOfRate * sampleRate) {
        return {};
    }
    const double halfGain = std::pow(10.0, gainDb / 40);
    const double damping = 1 / (quality * halfGain);
    Band band;
    band.tuning = static_cast<float>(std::tan(std::numbers::pi * centreHz / sampleRate));
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
