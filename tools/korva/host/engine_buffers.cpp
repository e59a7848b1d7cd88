#include "korva/host/engine_buffers.h"

#include <cstddef>

namespace korva::tool {

EngineBuffers::EngineBuffers(const SoundFormat& in, const SoundFormat& out, std::uint32_t frames)
    : inFormat(in),
      outFormat(out),
      frameCapacity(frames),
      inputSamples(std::size_t{frames} * in.channels),
      outputSamples(in == out ? 0 : std::size_t{frames} * out.channels) {}

std::span<const float> EngineBuffers::input(std::uint32_t frames) noexcept {
    return input().first(std::size_t{frames} * inFormat.channels);
}

std::span<const float> EngineBuffers::output(std::uint32_t frames) noexcept {
    return output().first(std::size_t{frames} * outFormat.channels);
}

}  // namespace korva::tool
