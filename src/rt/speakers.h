// Speakers, as bits of the published channel mask, and the eight planes of the bus that they land on.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace korva::rt {

inline constexpr std::uint32_t planeCount = 8;

/// The planes of the bus. They are all there is: speakers beyond them share one.
enum Plane : std::uint8_t {
    FrontLeft,
    FrontRight,
    FrontCenter,
    LowFrequency,
    BackLeft,
    BackRight,
    SideLeft,
    SideRight
};

/// Planes by mask bit, lowest bit first: the published order of speakers.
inline constexpr std::array<Plane, 18> planeOfSpeakerBit = {
    FrontLeft,     // 0x1 front left
    FrontRight,    // 0x2 front right
    FrontCenter,   // 0x4 front centre
    LowFrequency,  // 0x8 low frequency
    BackLeft,      // 0x10 back left
    BackRight,     // 0x20 back right
    FrontLeft,     // 0x40 front left of centre
    FrontRight,    // 0x80 front right of centre
    FrontCenter,   // 0x100 back centre
    SideLeft,      // 0x200 side left
    SideRight,     // 0x400 side right
    FrontCenter,   // 0x800 top centre
    FrontLeft,     // 0x1000 top front left
    FrontCenter,   // 0x2000 top front centre
    FrontRight,    // 0x4000 top front right
    BackLeft,      // 0x8000 top back left
    FrontCenter,   // 0x10000 top back centre
    BackRight      // 0x20000 top back right
};

/// The plane of mask bit number `bit`; bits without a speaker land on the first.
constexpr Plane planeOfBit(int bit) {
    return bit < static_cast<int>(planeOfSpeakerBit.size()) ? planeOfSpeakerBit[static_cast<std::size_t>(bit)]
                                                            : FrontLeft;
}

/// The mask that a stream of `channelCount` channels has when it names none; 0 where there is no default.
/// Seven channels get the mask of five on purpose.
constexpr std::uint32_t defaultSpeakerMask(std::int32_t channelCount) {
    constexpr std::array<std::uint32_t, 9> masks = {0, 0x4, 0x3, 0x7, 0x603, 0x607, 0x60F, 0x607, 0x63F};
    return channelCount >= 1 && channelCount <= 8 ? masks[static_cast<std::size_t>(channelCount)] : 0;
}

}  // namespace korva::rt
