// What the equaliser is asked for.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace equaliser {

inline constexpr std::size_t bandCount = 12;

/// The sound's controls, as parameters set them. The defaults change nothing.
struct Settings {
    std::array<float, bandCount> gainDb{};    ///< -24 to 24.
    std::array<float, bandCount> centreHz{};  ///< 10 to 40000; 0: `standardCentreHz`.
    float outputDb = 0;                       ///< -96 to 24.
    bool isBypassed = false;
    bool areEffectsDisabled = false;

    /// Takes over a parameter. Values out of range are brought to its end, those that are no numbers keep
    /// what was. False, and nothing has changed, if the parameter is not one of ours or has another size.
    bool take(std::int32_t bank, std::int32_t id, std::span<const std::byte> bytes) noexcept;
};

/// Four bands to a decade, as round as preferred numbers are.
inline constexpr std::array<float, bandCount> standardCentreHz{
    31.5f, 56.0f, 100.0f, 180.0f, 315.0f, 560.0f, 1e3f, 1800.0f, 3150.0f, 5600.0f, 10e3f, 18e3f};

}  // namespace equaliser
