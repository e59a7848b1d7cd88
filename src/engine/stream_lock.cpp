// The formats and the life of a stream.
#include <cassert>

#include "engine/effect_core.h"
#include "engine/format_negotiation.h"
#include "engine/stream_format.h"
#include "platform/published/results.h"
#include "rt/level_meter.h"

namespace korva::engine {

using published::APO_CONNECTION_DESCRIPTOR;
using published::IAudioMediaType;
using published::UNCOMPRESSEDAUDIOFORMAT;

namespace {

constexpr std::int32_t everything = -1;  // of what `Clear` could forget

/// The format of the first connection; all zero without one, and for one that doesn't tell.
rt::EngineFormat formatOfFirst(std::span<APO_CONNECTION_DESCRIPTOR* const> connections) {
    UNCOMPRESSEDAUDIOFORMAT format{};
    if (connections.empty() || connections.front() == nullptr || connections.front()->pFormat == nullptr ||
        published::failed(connections.front()->pFormat->GetUncompressedAudioFormat(&format))) {
        return {};
    }
    return engineFormatOf(format);
}

}  // namespace

HRESULT EffectCore::isInputFormatSupported(IAudioMediaType* opposite, IAudioMediaType* requested,
                                           IAudioMediaType** supported) {
    assert(isOwnerThread());
    return testFormat(dspEngine.value().get(), Direction::input, opposite, requested, supported);
}

HRESULT EffectCore::isOutputFormatSupported(IAudioMediaType* opposite, IAudioMediaType* requested,
                                            IAudioMediaType** supported) {
    assert(isOwnerThread());
    return testFormat(dspEngine.value().get(), Direction::output, opposite, requested, supported);
}

// The first buffer of a stream is known by `started`, which the audio thread sets.
HRESULT EffectCore::lockForProcess(std::span<APO_CONNECTION_DESCRIPTOR* const> inputs,
                                   std::span<APO_CONNECTION_DESCRIPTOR* const> outputs) {
    assert(isOwnerThread());
    processor.started.set(false);
    if (locked.value()) {
        return published::ok;
    }
    locked.set(true);
    try {
        beginStream(formatOfFirst(inputs), formatOfFirst(outputs));
    } catch (...) {
        unlockForProcess();  // half a stream's formats must not become the next one's
        throw;
    }
    return published::ok;
}

// Whom a value is shown to may end the stream: then nothing of the rest is to be done.
void EffectCore::beginStream(const rt::EngineFormat& in, const rt::EngineFormat& out) {
    setFormats(in, out);
    if (!locked.value()) {
        return;
    }
    const framework::Held<DspEngine> engine = dspEngine.value();
    if (engine) {
        readModuleVersion(*engine);
    }
    watchRequests();
    if (engine) {
        engine->Clear(everything);
    }
    (void)areMetersRequested();
    resetLevelMeters();
    pullLevelMeters();
}

void EffectCore::unlockForProcess() {
    assert(isOwnerThread());
    if (locked.value()) {
        locked.set(false);
        unwatchRequests();
        processor.started.set(false);
    }
}

// The rate starts the engine, which needs both formats; the single numbers follow.
void EffectCore::setFormats(const rt::EngineFormat& in, const rt::EngineFormat& out) {
    inFormat.set(in);
    outFormat.set(out);
    processor.inFormat.set(in);
    processor.outFormat.set(out);
    sampleRate.set(in.sampleRate);
    const auto inputCount = static_cast<std::uint32_t>(in.channelCount);
    const auto outputCount = static_cast<std::uint32_t>(out.channelCount);
    inChannelMask.set(in.channelMask);
    inputChannelCount.set(inputCount);
    outChannelMask.set(out.channelMask);
    outputChannelCount.set(outputCount);
    dspInChannelMask.set(in.channelMask);
    dspInputChannelCount.set(inputCount);
    dspOutChannelMask.set(out.channelMask);
    dspOutputChannelCount.set(outputCount);
    processor.inputChannelCount.set(in.channelCount);
    processor.outputChannelCount.set(out.channelCount);
    processor.outputChannelMask.set(out.channelMask);
    const rt::MeterRelease release = rt::MeterRelease::forSampleRate(in.sampleRate);
    processor.meterReleaseFloor.set(release.floor);
    processor.meterReleaseGrowth.set(release.growth);
}

}  // namespace korva::engine
