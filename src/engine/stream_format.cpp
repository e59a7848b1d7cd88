#include "engine/stream_format.h"

#include <algorithm>
#include <limits>

namespace korva::engine {

// A conversion of what doesn't fit is undefined, and a host's rate may be any float: the limits come first. A
// double holds each of them, and the sum, exactly.
std::uint32_t wholeRate(float framesPerSecond) noexcept {
    constexpr double greatest = std::numeric_limits<std::uint32_t>::max();
    const double rate = static_cast<double>(framesPerSecond) + 0.5;
    if (!(rate >= 0)) {
        return 0;
    }
    return static_cast<std::uint32_t>(std::min(rate, greatest));
}

rt::EngineFormat engineFormatOf(const published::UNCOMPRESSEDAUDIOFORMAT& format) noexcept {
    constexpr DWORD greatest = std::numeric_limits<std::int32_t>::max();
    const DWORD channels = format.dwSamplesPerFrame < greatest ? format.dwSamplesPerFrame : greatest;
    rt::EngineFormat record;
    record.Assign(wholeRate(format.fFramesPerSecond), static_cast<std::int32_t>(channels),
                  format.dwChannelMask);
    return record;
}

published::UNCOMPRESSEDAUDIOFORMAT floatFormatOf(const rt::EngineFormat& format) noexcept {
    return {.guidFormatType = published::ieeeFloatFormat,
            .dwSamplesPerFrame = static_cast<DWORD>(format.channelCount),
            .dwBytesPerSampleContainer = 4,
            .dwValidBitsPerSample = 32,
            .fFramesPerSecond = static_cast<float>(format.sampleRate),
            .dwChannelMask = format.channelMask};
}

}  // namespace korva::engine
