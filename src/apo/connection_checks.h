// The rules for the connections of a stream, each by itself.
#pragma once

#include <cstdint>
#include <span>

#include "platform/published/audio_object_records.h"
#include "platform/published/audio_records.h"

namespace korva::apo {

using published::APO_CONNECTION_DESCRIPTOR;
using published::APO_REG_PROPERTIES;

/// One side's connections as a host hands them over: an array of `count` pointers, or null.
struct ConnectionArray {
    UINT32 count = 0;
    APO_CONNECTION_DESCRIPTOR* const* first = nullptr;

    [[nodiscard]] std::span<APO_CONNECTION_DESCRIPTOR* const> all() const noexcept { return {first, count}; }
};

struct Connections {
    ConnectionArray inputs;
    ConnectionArray outputs;
};

/// What all connections of a stream have in common, as far as the object asks for it; the rest is 0.
struct SharedTraits {
    std::uint32_t samplesPerFrame = 0;  ///< Channels.
    std::uint32_t bytesPerSampleContainer = 0;
    std::uint32_t validBitsPerSample = 0;
    float framesPerSecond = 0.0f;

    bool operator==(const SharedTraits&) const = default;
};

// S_OK, or the result that the rule has for what breaks it. All are [com].

/// E_POINTER where there are no connections behind a count.
[[nodiscard]] HRESULT checkArrays(const Connections& connections) noexcept;

/// APOERR_NUM_CONNECTIONS_INVALID for fewer or more than the object takes.
[[nodiscard]] HRESULT checkCounts(const APO_REG_PROPERTIES& record, const Connections& connections) noexcept;

/// Takes the traits of the first connection. E_POINTER without a format; what the format fails with.
[[nodiscard]] HRESULT readTraits(std::uint32_t flags, const Connections& connections, SharedTraits& traits);

/// Of each connection: E_INVALIDARG for another signature, E_POINTER without a format, what the format fails
/// with, APOERR_INVALID_CONNECTION_FORMAT for other traits.
[[nodiscard]] HRESULT checkDescriptors(std::uint32_t flags, const SharedTraits& traits,
                                       const Connections& connections);

/// APOERR_INVALID_OUTPUT_MAXFRAMECOUNT where an output of the same rate is to take fewer frames than come in.
[[nodiscard]] HRESULT checkFrameCounts(std::uint32_t flags, const Connections& connections) noexcept;

/// APOERR_BUFFERS_OVERLAP where an object that doesn't work in place is to; what a format fails with.
[[nodiscard]] HRESULT checkOverlaps(std::uint32_t flags, const Connections& connections);

}  // namespace korva::apo
