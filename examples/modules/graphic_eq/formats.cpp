#include "formats.h"

#include <algorithm>

namespace equaliser {
namespace {

constexpr std::uint32_t lowestRate = 8000;
constexpr std::uint32_t highestRate = 384000;

/// Eight speakers around the listener, in the order of the planes.
constexpr EngineFormat allPlanes{
    0x63F, KORVA_PLANES, 0, {0, 1, 2, 3, 4, 5, 6, 7}, {1, 2, 3, 4, 5, 6, 10, 11}};

bool isSet(const EngineFormat& format) {
    return format.sampleRate != 0 && format.channelCount > 0;
}

bool isSame(const EngineFormat& one, const EngineFormat& other) {
    return one.channelMask == other.channelMask && one.channelCount == other.channelCount &&
           one.sampleRate == other.sampleRate;
}

/// The nearest format that would do.
EngineFormat corrected(const EngineFormat& format) {
    EngineFormat nearest = format.channelCount > KORVA_PLANES ? allPlanes : format;
    nearest.sampleRate = std::clamp(format.sampleRate, lowestRate, highestRate);
    return nearest;
}

}  // namespace

std::uint32_t testFormat(EngineFormat& requested, const EngineFormat& opposite) {
    if (requested.channelCount < 1) {
        return KORVA_FORMAT_REFUSED;
    }
    const EngineFormat wanted = corrected(isSet(opposite) ? opposite : requested);
    if (isSame(wanted, requested)) {
        return KORVA_FORMAT_ACCEPTED;
    }
    requested = wanted;
    return KORVA_FORMAT_CHANGED;
}

bool fitTogether(const EngineFormat& in, const EngineFormat& out) {
    return isSet(in) && isSame(in, corrected(in)) && isSame(in, out);
}

}  // namespace equaliser
