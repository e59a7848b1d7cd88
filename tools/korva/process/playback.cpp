#include "korva/process/playback.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "korva/interruption.h"

namespace korva::tool {
namespace {

/// The audio engine's buffers, one for each side, and the records that announce them.
class EngineBuffers {
public:
    EngineBuffers(const SoundFormat& in, const SoundFormat& out, std::uint32_t frames)
        : inputSamples(std::size_t{frames} * in.channels),
          outputSamples(std::size_t{frames} * out.channels) {}

    float* inputData() { return inputSamples.data(); }
    const float* outputData() const { return outputSamples.data(); }

    /// One call for the first `frames` frames.
    void processWith(HostedObject& object, std::uint32_t frames) {
        auto input = connection(inputSamples, frames);
        auto output = connection(outputSamples, frames);
        object.process(input, output);
    }

private:
    static APO_CONNECTION_PROPERTY connection(std::vector<float>& samples, std::uint32_t frames) {
        return {.pBuffer = reinterpret_cast<UINT_PTR>(samples.data()),
                .u32ValidFrameCount = frames,
                .u32BufferFlags = published::BUFFER_VALID,
                .u32Signature = published::connectionPropertySignature};
    }

    std::vector<float> inputSamples;
    std::vector<float> outputSamples;
};

std::uint32_t largestBuffer(const SoundReader& reader, std::uint32_t bufferFrames) {
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(bufferFrames, reader.frames().value_or(bufferFrames)));
}

}  // namespace

Playback::Playback(HostedObject& hosted, const PlayedEndpoint& played,
                   const std::vector<StreamEvent>& planned, ProcessReport& told) noexcept
    : object(hosted), endpoint(played), events(planned), report(told) {}

void Playback::play(SoundReader& reader, SoundWriter& writer, ProgressBar& progress) {
    const std::uint32_t frames = largestBuffer(reader, report.bufferFrames);
    EngineBuffers buffers(report.input.format, report.output.format, frames);
    object.lock(report.input.format, report.output.format, frames, report.peaks.has_value());
    while (const std::uint32_t count = reader.read(buffers.inputData(), frames)) {
        throwIfInterrupted();
        makeChanges();
        buffers.processWith(object, count);
        report.timings.add(object.lastProcessNs());
        if (report.peaks) {
            object.raise(*report.peaks);
        }
        writer.write(buffers.outputData(), count);
        report.frames += count;
        progress.update(report.frames);
    }
    checkAllMade();
    report.engine = object.engineUse();
    object.unlock();
}

/// Those whose time has come.
void Playback::makeChanges() {
    const std::uint32_t rate = report.input.format.sampleRate;
    for (; next < events.size() && events[next].frame(rate) <= report.frames; ++next) {
        ReportedChange made{.seconds = static_cast<double>(report.frames) / rate};
        std::visit([&](const auto& change) { make(change, made); }, events[next].change);
        report.changes.push_back(std::move(made));
    }
}

/// Of an input that doesn't say how long it is.
void Playback::checkAllMade() const {
    if (next < events.size()) {
        failAsTooLate(events[next]);
    }
}

void Playback::make(const PresetChange& change, ReportedChange& made) {
    made.preset = change.file;
    made.arrivalMs = endpoint.changePreset(object, change.preset);
}

void Playback::make(const VolumeChange& change, ReportedChange& made) {
    made.volume = change.scalar;
    object.notifyVolume(change.scalar);
}

}  // namespace korva::tool
