// Levels as people read them: decibels, and peaks that stay for a while.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <string>

#include "korva/monitor/instance_view.h"

namespace korva::tool {

/// Of a linear level; minus infinity for silence, NaN for what is no level.
[[nodiscard]] float decibels(float linear);

/// "-6.0", "+1.5"; "-inf" for silence and "?" for what is no level.
[[nodiscard]] std::string decibelText(float level);

/// The lowest level that a bar shows; it ends at full scale.
inline constexpr float barFloor = -60.0F;

/// The part of a bar that a level in decibels fills, in `steps`: 0 to `steps`.
[[nodiscard]] std::size_t barLength(float level, std::size_t steps);

/// The highest of the levels, linear; NaN if one of them is no level.
[[nodiscard]] float highestOf(const MeterLevels& levels);

/// The highest levels of late, in decibels: each stays for a while, then falls.
class PeakHold {
public:
    using Time = std::chrono::steady_clock::time_point;

    PeakHold();
    /// Levels at a time, which never goes back.
    void update(const MeterLevels& linear, Time now);
    [[nodiscard]] const std::array<float, 8>& levels() const { return held; }

private:
    std::array<float, 8> held;
    std::array<Time, 8> since{};  ///< When each was reached.
    Time last{};                  ///< Of the last update.
};

}  // namespace korva::tool
