// How long a buffer lasts, and how much of that time its processing takes.
#pragma once

#include <cstdint>

namespace korva::engine {

struct BufferLoad {
    std::uint32_t bufferSizeMs = 0;  ///< Rounded down.
    std::uint32_t cpuUsage = 0;      ///< Tenths of a percent of the buffer's time, rounded down.

    bool operator==(const BufferLoad&) const = default;
};

/// Of the last buffer: its frames, the frames of a second, and the time that its call took. All zero without
/// frames or without a rate; what is too much for a number is the largest one.  [any]
[[nodiscard]] BufferLoad bufferLoadOf(std::uint32_t frames, std::uint32_t sampleRate,
                                      std::uint64_t processNs) noexcept;

}  // namespace korva::engine
