// The real-time section of an audio object: one processing call, from the engine's buffers and back.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/published/audio_records.h"
#include "rt/dsp_block.h"
#include "rt/engine_format.h"
#include "rt/engine_gate.h"
#include "rt/gain_ramp.h"
#include "rt/kernels/kernels.h"
#include "rt/level_meter.h"
#include "rt/realtime.h"
#include "rt/sample_tap.h"
#include "rt/shared_word.h"

namespace korva::rt {

using published::APO_CONNECTION_PROPERTY;

/// Takes a buffer apart into eight planes, 512 frames at a time, hands them to the module's host or folds
/// them itself, and puts the result together again. It locks, allocates and waits for nothing, and cannot
/// fail: bad input leaves the connections untouched.
///
/// Thread safety: `Process` belongs to one audio thread. The owner thread calls all the rest, while a stream
/// runs too, but for what says otherwise. Settings and measures are relaxed words, since each stands for
/// itself and may take effect a buffer later; a format may be torn for the one buffer during which it
/// changes. Only the engine needs an order between the two threads, and the gate gives it.
///
/// Memory: the sixteen planes, whatever the buffer's size, and a constant.
class RtProcessor {
public:
    explicit RtProcessor(const Kernels& kernels = chosenKernels()) noexcept;
    RtProcessor(const RtProcessor&) = delete;
    RtProcessor& operator=(const RtProcessor&) = delete;

    /// One processing call. Reads the first connection of each side only. `samplesPerFrame` is what a plain
    /// copy multiplies by, where the call passes the sound through.  [audio, rt]
    void Process(std::uint32_t inputCount, APO_CONNECTION_PROPERTY* const* inputs, std::uint32_t outputCount,
                 APO_CONNECTION_PROPERTY* const* outputs,
                 std::uint32_t samplesPerFrame) noexcept KORVA_NONBLOCKING;

    /// Puts `next` (null: none) in the place of the engine, and gives the one that was there. No call is in
    /// that one any more, nor will be: it may be released. Meanwhile the stream is folded.  [owner, blocks]
    BlockProcessor* exchangeEngine(BlockProcessor* next) noexcept;

    /// All levels and release steps to 0. Only while no stream runs.  [owner]
    void resetMeters() noexcept;

    /// A call neither buffers nor resamples: as many frames go out as come in.  [audio, rt]
    [[nodiscard]] static constexpr std::uint32_t CalcInputFrames(std::uint32_t outputFrames) noexcept {
        return outputFrames;
    }
    [[nodiscard]] static constexpr std::uint32_t CalcOutputFrames(std::uint32_t inputFrames) noexcept {
        return inputFrames;
    }

    // Written by the owner, read by the audio thread.
    SharedWord<std::int32_t> inputChannelCount;
    SharedWord<std::int32_t> outputChannelCount;
    SharedWord<std::uint32_t> outputChannelMask;
    SharedFormat inFormat;
    SharedFormat outFormat;
    SharedWord<float> meterReleaseFloor;
    SharedWord<float> meterReleaseGrowth;
    SharedWord<std::uint32_t> levelMetersEnabled;  ///< Non-zero runs the meters.
    SharedWord<bool> passThrough;                  ///< Sound passes as it is.
    SharedWord<bool> hardwareMode;                 ///< The ramp is left to the device.

    // Written by the audio thread; the owner clears `started` to make the next call a stream's first.
    SharedWord<bool> started;
    SharedWord<std::uint32_t> lastFrames;                 ///< Input frames of the last call.
    SharedWord<std::uint64_t> lastProcessNs;              ///< Duration of the last call.
    std::array<SharedWord<float>, planeCount> inputPeak;  ///< By plane; linear, full scale is 1.0.
    std::array<SharedWord<float>, planeCount> outputPeak;

    // Changed by the owner while no stream runs, else the audio thread's.
    GainRampState gainRamp;
    SampleTap inputTap;
    SampleTap outputTap;

private:
    struct Call;

    void beginStream() noexcept;
    void describe(Call& call, BlockProcessor* engine) const noexcept;
    [[nodiscard]] bool planesAreObserved(const Call& call) const noexcept;
    [[nodiscard]] bool dryPlanesAreRead(const Call& call) const noexcept;
    void processBuffer(const Call& call, const APO_CONNECTION_PROPERTY& input,
                       const APO_CONNECTION_PROPERTY& output) noexcept;
    void processBlock(const Call& call, const float* input, float* output, std::uint32_t frames) noexcept;
    void followLevels(const Call& call, std::uint32_t frames) noexcept;
    void publishPeaks() noexcept;

    const Kernels& kernels;
    EngineGate gate;
    BlockProcessor* rtEngine = nullptr;  ///< Guarded by the gate.
    MeterState inputMeter;               ///< The audio thread's.
    MeterState outputMeter;
    std::array<float*, planeCount> wetPlanes;  ///< The working bus.
    std::array<float*, planeCount> dryPlanes;  ///< A second copy of the input, which no module changes.

    // A plane is 2 KiB. Planes on a grid of that size fall on the same lines of the first-level cache, so
    // each is followed by a line that nobody uses.
    static constexpr std::size_t paddingFrames = 16;
    alignas(64) std::array<std::array<float, blockFrames + paddingFrames>, 2 * planeCount> planeMemory{};
};

}  // namespace korva::rt
