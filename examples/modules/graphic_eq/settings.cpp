#include "settings.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "korva/dsp_module.h"

namespace equaliser {
namespace {

constexpr std::int32_t bankOfEqualiser = 0;
constexpr std::int32_t idOfGains = 3;
constexpr std::int32_t idOfOutputGain = 4;
constexpr std::int32_t idOfCentres = 5;
constexpr std::int32_t idOfBypass = 8;

float gainInRange(float db) {
    return std::clamp(db, -24.0f, 24.0f);
}

float outputGainInRange(float db) {
    return std::clamp(db, -96.0f, 24.0f);
}

float centreInRange(float hz) {
    return hz == 0 ? 0.0f : std::clamp(hz, 10.0f, 40e3f);
}

/// Bytes come at any address, so they are copied to where a float may be.
bool takeFloats(std::span<float> values, std::span<const std::byte> bytes, float (*inRange)(float)) {
    if (bytes.size() != values.size_bytes()) {
        return false;
    }
    for (std::size_t i = 0; i < values.size(); ++i) {
        float value = 0;
        std::memcpy(&value, bytes.data() + i * sizeof value, sizeof value);
        if (std::isfinite(value)) {
            values[i] = inRange(value);
        }
    }
    return true;
}

bool takeSwitch(bool& value, std::span<const std::byte> bytes) {
    if (bytes.size() != 1) {
        return false;
    }
    value = bytes[0] != std::byte{0};
    return true;
}

}  // namespace

bool Settings::take(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes) noexcept {
    if (bank == KORVA_BANK_ENGINE && id == KORVA_PARAMETER_EFFECTS_DISABLED) {
        return takeSwitch(areEffectsDisabled, bytes);
    }
    if (bank != bankOfEqualiser) {
        return false;
    }
    switch (id) {
        case idOfGains:
            return takeFloats(gainDb, bytes, gainInRange);
        case idOfOutputGain:
            return takeFloats({&outputDb, 1}, bytes, outputGainInRange);
        case idOfCentres:
            return takeFloats(centreHz, bytes, centreInRange);
        case idOfBypass:
            return takeSwitch(isBypassed, bytes);
        default:
            return false;
    }
}

}  // namespace equaliser
