#include "engine/stream_format.h"

#include <limits>

namespace korva::engine {

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
