// One processing call written down step by step, as an oracle for the processor.
#pragma once

#include <array>
#include <cstdint>

#include "platform/published/audio_records.h"
#include "rt/dsp_block.h"
#include "rt/engine_format.h"
#include "rt/gain_ramp.h"

namespace korva::test {

/// What a processor should do, in its simplest form: each step a loop over all planes of one block, and
/// nothing left out where nobody would notice.
class ProcessModel {
public:
    void process(const published::APO_CONNECTION_PROPERTY& input, published::APO_CONNECTION_PROPERTY& output,
                 std::uint32_t samplesPerFrame);

    struct Meter {
        std::array<float, rt::planeCount> peak{};
        std::array<float, rt::planeCount> slope{};
    };

    std::int32_t inputChannelCount = 0;
    std::int32_t outputChannelCount = 0;
    rt::EngineFormat inFormat;
    rt::EngineFormat outFormat;
    float meterReleaseFloor = 0.0f;
    float meterReleaseGrowth = 0.0f;
    bool levelMetersEnabled = false;
    bool passThrough = false;
    bool hardwareMode = false;
    bool started = false;
    std::uint32_t lastFrames = 0;
    rt::BlockProcessor* engine = nullptr;
    rt::GainRampState gainRamp;
    Meter inputMeter;
    Meter outputMeter;

private:
    using Planes = std::array<std::array<float, rt::blockFrames>, rt::planeCount>;

    void copy(const published::APO_CONNECTION_PROPERTY& input,
              const published::APO_CONNECTION_PROPERTY& output, std::uint32_t samplesPerFrame) const;
    void processBlock(const float* input, float* output, std::uint32_t frames);
    void deinterleave(const float* input, std::uint32_t frames);
    void runEngineOrMixer(std::uint32_t frames);
    void ramp(std::uint32_t frames);
    void meter(Meter& state, const rt::EngineFormat& layout, std::uint32_t frames) const;
    void interleave(float* output, std::uint32_t frames) const;

    Planes wet{};
    Planes dry{};
};

}  // namespace korva::test
