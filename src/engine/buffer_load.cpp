#include "engine/buffer_load.h"

#include <limits>

namespace korva::engine {
namespace {

std::uint32_t truncated(double value) noexcept {
    constexpr auto largest = std::numeric_limits<std::uint32_t>::max();
    return value < static_cast<double>(largest) ? static_cast<std::uint32_t>(value) : largest;
}

}  // namespace

BufferLoad bufferLoadOf(std::uint32_t frames, std::uint32_t sampleRate, std::uint64_t processNs) noexcept {
    if (frames == 0 || sampleRate == 0) {
        return {};
    }
    const double bufferMs = static_cast<double>(frames) / sampleRate * 1000.0;
    const double processMs = static_cast<double>(processNs) * 1e-6;
    return {truncated(bufferMs), truncated(processMs / bufferMs * 1000.0)};
}

}  // namespace korva::engine
