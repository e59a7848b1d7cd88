#include "tests/support/process_model.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "tests/support/reference_fold.h"

namespace korva::test {
namespace {

std::size_t atMostEight(std::int32_t channels) {
    return static_cast<std::size_t>(std::clamp(channels, 0, 8));
}

bool saysSilence(const published::APO_CONNECTION_PROPERTY& connection) {
    return connection.u32BufferFlags == 2 || connection.pBuffer == 0;
}

}  // namespace

void ProcessModel::process(const published::APO_CONNECTION_PROPERTY& input,
                           published::APO_CONNECTION_PROPERTY& output, std::uint32_t samplesPerFrame) {
    if (input.u32BufferFlags != 1 && input.u32BufferFlags != 2) {
        return;
    }
    lastFrames = input.u32ValidFrameCount;
    if (!started && gainRamp.step < 1.0f) {
        gainRamp.gain = gainRamp.floorGain;
    }
    started = true;
    const bool inSilent = saysSilence(input);
    const bool outSilent = saysSilence(output);
    if (passThrough || outSilent) {
        copy(input, output, samplesPerFrame);
    } else {
        const auto* from = reinterpret_cast<const float*>(input.pBuffer);
        auto* to = reinterpret_cast<float*>(output.pBuffer);
        for (std::size_t done = 0; done < input.u32ValidFrameCount; done += rt::blockFrames) {
            const std::size_t left = input.u32ValidFrameCount - done;
            processBlock(inSilent ? nullptr : from + done * atMostEight(inputChannelCount),
                         to + done * atMostEight(outputChannelCount),
                         static_cast<std::uint32_t>(std::min<std::size_t>(left, rt::blockFrames)));
        }
    }
    output.u32BufferFlags = outSilent ? published::BUFFER_SILENT : published::BUFFER_VALID;
    output.u32ValidFrameCount = input.u32ValidFrameCount;
}

void ProcessModel::copy(const published::APO_CONNECTION_PROPERTY& input,
                        const published::APO_CONNECTION_PROPERTY& output,
                        std::uint32_t samplesPerFrame) const {
    const std::size_t bytes = std::size_t{input.u32ValidFrameCount} * samplesPerFrame * 4;
    auto* to = reinterpret_cast<std::byte*>(output.pBuffer);
    if (input.pBuffer == output.pBuffer || to == nullptr || bytes == 0) {
        return;
    }
    if (saysSilence(output) || saysSilence(input)) {
        std::fill_n(to, bytes, std::byte{0});
    } else {
        std::memmove(to, reinterpret_cast<const void*>(input.pBuffer), bytes);
    }
}

void ProcessModel::processBlock(const float* input, float* output, std::uint32_t frames) {
    deinterleave(input, frames);
    if (levelMetersEnabled) {
        meter(inputMeter, inFormat, frames);
    }
    runEngineOrMixer(frames);
    if (!hardwareMode) {
        ramp(frames);
    }
    if (levelMetersEnabled) {
        meter(outputMeter, outFormat, frames);
    }
    interleave(output, frames);
}

void ProcessModel::deinterleave(const float* input, std::uint32_t frames) {
    const std::size_t channels = atMostEight(inputChannelCount);
    for (std::size_t k = 0; k < frames; ++k) {
        for (std::size_t plane = 0; plane < rt::planeCount; ++plane) {
            wet[plane][k] = 0.0f;
            dry[plane][k] = 0.0f;
        }
        for (std::size_t c = 0; c < channels; ++c) {
            const float sample = input != nullptr ? input[c + k * channels] : 0.0f;
            wet[inFormat.planeOfChannel[c]][k] = sample;
            dry[inFormat.planeOfChannel[c]][k] = sample;
        }
    }
}

void ProcessModel::runEngineOrMixer(std::uint32_t frames) {
    std::array<float*, rt::planeCount> planes{};
    for (std::size_t plane = 0; plane < planes.size(); ++plane) {
        planes[plane] = wet[plane].data();
    }
    if (engine == nullptr) {
        foldByRows(planes.data(), inFormat.channelMask, outFormat.channelMask, frames);
        return;
    }
    rt::DspBlock block{.channels = planes.data(),
                       .inChannels = static_cast<std::uint32_t>(atMostEight(inputChannelCount)),
                       .outChannels = static_cast<std::uint32_t>(atMostEight(outputChannelCount)),
                       .frames = frames};
    engine->Process(&block);
}

void ProcessModel::ramp(std::uint32_t frames) {
    rt::GainRampState& r = gainRamp;
    if (r.step == 1.0f || (r.step > 1.0f && r.gain >= 1.0f)) {
        return;
    }
    for (std::size_t k = 0; k < frames; ++k) {
        for (std::size_t plane = 0; plane < atMostEight(outFormat.channelCount); ++plane) {
            float& sample = wet[plane][k];
            if (r.crossfade != 0) {
                const float dryPart = (1.0f - r.gain) * dry[plane][k];
                const float wetPart = r.gain * sample;
                sample = dryPart + wetPart;
            } else {
                sample *= r.gain;
            }
        }
        r.gain *= r.step;
        r.gain = r.floorGain > r.gain ? r.floorGain : r.gain;
        const float highest = r.crossfade != 0 ? r.ceilingGain : 1.0f;
        r.gain = r.gain > highest ? highest : r.gain;
    }
    if (r.floorGain >= r.gain) {
        r.reachedFloor = true;
    }
}

void ProcessModel::meter(Meter& state, const rt::EngineFormat& layout, std::uint32_t frames) const {
    for (std::size_t c = 0; c < atMostEight(layout.channelCount); ++c) {
        const std::size_t plane = layout.planeOfChannel[c];
        float& peak = state.peak[plane];
        float& slope = state.slope[plane];
        for (std::size_t k = 0; k < frames; ++k) {
            peak = peak - slope;
            slope = slope * meterReleaseGrowth;
            peak = peak > 0.0f ? peak : 0.0f;
            const float level = std::fabs(wet[plane][k]);
            if (level > peak) {
                peak = level;
                slope = meterReleaseFloor;
            } else {
                slope = slope > meterReleaseFloor ? slope : meterReleaseFloor;
            }
        }
    }
}

void ProcessModel::interleave(float* output, std::uint32_t frames) const {
    const std::size_t channels = atMostEight(outputChannelCount);
    for (std::size_t k = 0; k < frames; ++k) {
        for (std::size_t c = 0; c < channels; ++c) {
            output[c + k * channels] = wet[outFormat.planeOfChannel[c]][k];
        }
    }
}

}  // namespace korva::test
