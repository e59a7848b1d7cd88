// Sound at its own speed.
#pragma once

#include <chrono>
#include <cstdint>

namespace korva::tool {

/// Lets the time of a sound pass as on a device that plays it, from when this is made. A buffer that comes
/// late doesn't shift those after it.
class Pace {
public:
    /// `sampleRate` in frames per second, at least 1.
    explicit Pace(std::uint32_t sampleRate) noexcept;

    /// Waits until so many frames have been played; not at all if they have. Throws `Interrupted`.  [blocks]
    void waitFor(std::uint64_t frames) const;

private:
    const std::uint32_t rate;
    const std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

}  // namespace korva::tool
