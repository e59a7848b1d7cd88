// Connections as a host announces them and hands them over.
#pragma once

#include <cstdint>
#include <span>

#include "platform/published/audio_interfaces.h"

namespace korva::test {

/// A connection of a stream, as a lock announces it. `type` outlives it.
struct Connection : published::APO_CONNECTION_DESCRIPTOR {
    explicit Connection(published::IAudioMediaType& type)
        : APO_CONNECTION_DESCRIPTOR{published::APO_CONNECTION_BUFFER_TYPE_ALLOCATED, 0, 4800, &type,
                                    0x41434453} {}
};

/// One of a processing call; its buffer is null where there are no samples.
[[nodiscard]] inline published::APO_CONNECTION_PROPERTY bufferOf(std::span<const float> samples,
                                                                 std::uint32_t frames,
                                                                 std::uint32_t flags = 1) {
    const float* const start = samples.empty() ? nullptr : samples.data();
    return {reinterpret_cast<UINT_PTR>(start), frames, static_cast<published::APO_BUFFER_FLAGS>(flags),
            0x41435053};
}

}  // namespace korva::test
