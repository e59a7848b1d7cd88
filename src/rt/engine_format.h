// How the interleaved channels of a stream land on the eight planes of the bus.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "rt/speakers.h"

namespace korva::rt {

/// One side's stream format, and its map from interleaved channels to planes. A plain value of 28 bytes:
/// its layout is part of the module interface. All zero means that none is set yet.
struct EngineFormat {
    std::uint32_t channelMask = 0;                          ///< Speaker bits, after correction.
    std::int32_t channelCount = 0;                          ///< Channels in a frame of the stream.
    std::uint32_t sampleRate = 0;                           ///< Frames per second, whole.
    std::array<std::uint8_t, planeCount> planeOfChannel{};  ///< Plane of the n-th interleaved channel.
    std::array<std::uint8_t, planeCount> speakerOfPlane{};  ///< Marker (bit + 1) last put there; 0 is free.

    /// Takes rate and count, maps `mask`, and mends a mask whose bits don't fit the count: too few bits
    /// fall back to the count's default mask, of too many the highest are dropped from `channelMask` (the
    /// map keeps them).  [owner]
    void Assign(std::uint32_t rate, std::int32_t count, std::uint32_t mask) noexcept;

    /// Maps `mask`, lowest bit first, and leaves rate and count alone. Only eight bits get a channel; of
    /// two that share a plane the later one leaves its marker.  [owner]
    void SetMask(std::uint32_t mask) noexcept;

    /// `SetMask` with the count's default; without one nothing changes.  [owner]
    void SetDefaultMask() noexcept;

    bool operator==(const EngineFormat&) const = default;
};
static_assert(sizeof(EngineFormat) == 28);
static_assert(offsetof(EngineFormat, channelMask) == 0);
static_assert(offsetof(EngineFormat, channelCount) == 4);
static_assert(offsetof(EngineFormat, sampleRate) == 8);
static_assert(offsetof(EngineFormat, planeOfChannel) == 12);
static_assert(offsetof(EngineFormat, speakerOfPlane) == 20);

}  // namespace korva::rt
