#include "rt/rt_processor.h"

#include <algorithm>
#include <chrono>

#include "rt/channel_mixer.h"
#include "rt/direct_copy.h"
#include "rt/stereo_shapes.h"

namespace korva::rt {

/// What one call works with: private copies of the words that the owner may change meanwhile.
struct RtProcessor::Call {
    EngineFormat in;
    EngineFormat out;
    std::uint32_t inChannels;  ///< Clamped to the planes.
    std::uint32_t outChannels;
    BlockProcessor* engine;  ///< Null: fold.
    bool metered;
    bool ramped;
    MeterRelease release;
};

namespace {

std::uint32_t clampToPlanes(std::int32_t channels) noexcept {
    return static_cast<std::uint32_t>(std::clamp(channels, 0, static_cast<std::int32_t>(planeCount)));
}

/// How many samples a tap copies: as the words say, unclamped; none where one is negative.
std::uint64_t tapSamples(std::int64_t perFrame, std::uint32_t frames) noexcept {
    return perFrame > 0 ? static_cast<std::uint64_t>(perFrame) * frames : 0;
}

std::uint64_t elapsedNs(std::chrono::steady_clock::time_point since) noexcept {
    const auto elapsed = std::chrono::steady_clock::now() - since;
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(elapsed).count());
}

}  // namespace

// The planes and a constant: nothing grows with the engine's buffers.
static_assert(sizeof(RtProcessor) <= 2 * planeCount * blockFrames * sizeof(float) + 2048);

RtProcessor::RtProcessor(const Kernels& kernelsToUse) noexcept : kernels(kernelsToUse) {
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        wetPlanes[plane] = planeMemory[plane].data();
        dryPlanes[plane] = planeMemory[planeCount + plane].data();
    }
}

BlockProcessor* RtProcessor::exchangeEngine(BlockProcessor* next) noexcept {
    gate.raise();
    BlockProcessor* const previous = rtEngine;
    rtEngine = next;
    gate.lower();
    return previous;
}

void RtProcessor::resetMeters() noexcept {
    inputMeter = {};
    outputMeter = {};
    publishPeaks();
}

KORVA_RT_CODE void RtProcessor::Process(std::uint32_t inputCount, APO_CONNECTION_PROPERTY* const* inputs,
                                        std::uint32_t outputCount, APO_CONNECTION_PROPERTY* const* outputs,
                                        std::uint32_t samplesPerFrame) noexcept KORVA_NONBLOCKING {
    if (inputCount == 0 || outputCount == 0 || !isProcessable(*inputs[0])) {
        return;
    }
    const auto start = std::chrono::steady_clock::now();
    const APO_CONNECTION_PROPERTY& input = *inputs[0];
    APO_CONNECTION_PROPERTY& output = *outputs[0];
    lastFrames.set(input.u32ValidFrameCount);
    if (!started.get()) {
        beginStream();
    }

    const bool gateIsOpen = gate.enter();
    const auto* const inSamples = reinterpret_cast<const float*>(input.pBuffer);
    // The tap takes as many frames as the engine last left in the output connection.
    writeTap(inputTap, isSilent(input) ? nullptr : inSamples,
             tapSamples(inputChannelCount.get(), output.u32ValidFrameCount));
    if (passThrough.get() || isSilent(output)) {
        copySamples(input, output, samplesPerFrame);
    } else {
        Call call;
        describe(call, gateIsOpen ? rtEngine : nullptr);
        processBuffer(call, input, output);
    }
    finishOutput(input, output);
    // Multiplies by the mask and not by the channel count: readers of the ring expect it so.
    writeTap(outputTap, reinterpret_cast<const float*>(output.pBuffer),
             tapSamples(outputChannelMask.get(), output.u32ValidFrameCount));
    lastProcessNs.set(elapsedNs(start));
    gate.leave();
}

/// A ramp with a step below 1 begins at its floor with the first buffer after a lock.
KORVA_RT_CODE void RtProcessor::beginStream() noexcept {
    started.set(true);
    if (gainRamp.step < 1.0f) {
        gainRamp.gain = gainRamp.floorGain;
    }
}

KORVA_RT_CODE void RtProcessor::describe(Call& call, BlockProcessor* engine) const noexcept {
    inFormat.copyTo(call.in);
    outFormat.copyTo(call.out);
    call.inChannels = clampToPlanes(inputChannelCount.get());
    call.outChannels = clampToPlanes(outputChannelCount.get());
    call.engine = engine;
    call.metered = levelMetersEnabled.get() != 0;
    call.ramped = !hardwareMode.get();
    call.release = {meterReleaseFloor.get(), meterReleaseGrowth.get()};
}

/// Whether somebody could tell that the sound went through the planes.
KORVA_RT_CODE bool RtProcessor::planesAreObserved(const Call& call) const noexcept {
    return call.engine != nullptr || call.metered || (call.ramped && gainRamp.isRunning()) ||
           inputTap.samples != nullptr || outputTap.samples != nullptr;
}

/// No module gets the dry planes. Only a crossfade reads them, and the followers, which run after the module.
KORVA_RT_CODE bool RtProcessor::dryPlanesAreRead(const Call& call) const noexcept {
    return call.metered || (call.ramped && gainRamp.crossfade != 0 && gainRamp.isRunning());
}

KORVA_RT_CODE void RtProcessor::processBuffer(const Call& call, const APO_CONNECTION_PROPERTY& input,
                                              const APO_CONNECTION_PROPERTY& output) noexcept {
    const auto* in = isSilent(input) ? nullptr : reinterpret_cast<const float*>(input.pBuffer);
    auto* out = reinterpret_cast<float*>(output.pBuffer);
    const std::uint32_t frames = input.u32ValidFrameCount;
    if (in != nullptr && kernels.foldToStereo != nullptr && !planesAreObserved(call) &&
        isStereoFold(call.in, call.inChannels, call.out, call.outChannels) &&
        isApartOrInPlace(in, call.inChannels, out, call.outChannels, frames)) {
        kernels.foldToStereo(in, call.inChannels, out, frames);
        return;
    }
    for (std::uint32_t done = 0; done < frames;) {
        const std::uint32_t n = std::min(frames - done, blockFrames);
        processBlock(call, in, out, n);
        done += n;
        in = in != nullptr ? in + std::size_t{n} * call.inChannels : nullptr;
        out += std::size_t{n} * call.outChannels;
    }
    if (call.metered) {
        publishPeaks();
    }
}

KORVA_RT_CODE void RtProcessor::processBlock(const Call& call, const float* input, float* output,
                                             std::uint32_t frames) noexcept {
    kernels.deinterleave(input, call.inChannels, call.in.planeOfChannel.data(), wetPlanes.data(),
                         dryPlanesAreRead(call) ? dryPlanes.data() : nullptr, frames);
    DspBlock block{.channels = wetPlanes.data(),
                   .inChannels = call.inChannels,
                   .outChannels = call.outChannels,
                   .frames = frames};
    if (call.engine != nullptr) {
        call.engine->Process(&block);
    } else {
        ChannelMixer(block, call.in, call.out, kernels);
    }
    if (call.ramped) {
        GainRamp(gainRamp, wetPlanes.data(), dryPlanes.data(), call.out.channelCount, frames);
    }
    if (call.metered) {
        followLevels(call, frames);
    }
    kernels.interleave(wetPlanes.data(), call.out.planeOfChannel.data(), call.outChannels, output, frames);
}

/// The dry planes still hold the input, so both sides' followers run side by side.
KORVA_RT_CODE void RtProcessor::followLevels(const Call& call, std::uint32_t frames) noexcept {
    MeterLanes lanes;
    lanes.add(inputMeter, dryPlanes.data(), call.in);
    lanes.add(outputMeter, wetPlanes.data(), call.out);
    lanes.follow(call.release, frames, kernels);
}

KORVA_RT_CODE void RtProcessor::publishPeaks() noexcept {
    for (std::size_t plane = 0; plane < planeCount; ++plane) {
        inputPeak[plane].set(inputMeter.peak[plane]);
        outputPeak[plane].set(outputMeter.peak[plane]);
    }
}

}  // namespace korva::rt
