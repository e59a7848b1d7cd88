#include "korva/monitor/decibels.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace korva::tool {
namespace {

constexpr float silence = -std::numeric_limits<float>::infinity();
constexpr auto holdTime = std::chrono::milliseconds(1500);
constexpr float fallPerSecond = 20.0F;

}  // namespace

float decibels(float linear) {
    if (std::isnan(linear) || linear < 0.0F) {
        return std::numeric_limits<float>::quiet_NaN();
    }
    return linear == 0.0F ? silence : 20.0F * std::log10(linear);
}

std::string decibelText(float level) {
    if (std::isnan(level)) {
        return "?";
    }
    if (std::isinf(level)) {
        return level < 0 ? "-inf" : "+inf";
    }
    const float rounded = std::round(level * 10.0F) / 10.0F + 0.0F;  // and no -0.0
    return rounded > 0.0F ? fmt::format("{:+.1f}", rounded) : fmt::format("{:.1f}", rounded);
}

std::size_t barLength(float level, std::size_t steps) {
    if (std::isnan(level)) {
        return 0;
    }
    const float part = std::clamp(1.0F - level / barFloor, 0.0F, 1.0F);
    return static_cast<std::size_t>(part * static_cast<float>(steps));
}

float highestOf(const MeterLevels& levels) {
    float highest = 0.0F;
    for (const float level : levels) {
        if (std::isnan(level)) {
            return level;
        }
        highest = std::max(highest, level);
    }
    return highest;
}

PeakHold::PeakHold() {
    held.fill(silence);
}

void PeakHold::update(const MeterLevels& linear, Time now) {
    for (std::size_t i = 0; i < held.size(); ++i) {
        // A level that is none is below all others.
        const float level = std::isnan(decibels(linear[i])) ? silence : decibels(linear[i]);
        const Time fallsFrom = std::max(since[i] + holdTime, last);
        if (now > fallsFrom) {
            held[i] -= fallPerSecond * std::chrono::duration<float>(now - fallsFrom).count();
        }
        if (level >= held[i]) {
            held[i] = level;
            since[i] = now;
        }
    }
    last = now;
}

}  // namespace korva::tool
