#include "korva/process/playback.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <utility>
#include <variant>

#include "korva/interruption.h"
#include "korva/process/levels.h"
#include "korva/process/pace.h"

namespace korva::tool {

using std::chrono::steady_clock;

namespace {

std::uint64_t nanoseconds(steady_clock::duration duration) {
    return static_cast<std::uint64_t>(std::chrono::nanoseconds(duration).count());
}

std::uint32_t largestBuffer(const SoundReader& reader, std::uint32_t bufferFrames) {
    return static_cast<std::uint32_t>(
        std::min<std::uint64_t>(bufferFrames, reader.frames().value_or(bufferFrames)));
}

}  // namespace

Playback::Playback(AudioObject& hosted, const PlayedModule& used, const PlayedEndpoint& played,
                   const std::vector<StreamEvent>& planned, ProcessReport& told) noexcept
    : object(hosted), module(used), endpoint(played), events(planned), report(told) {}

void Playback::play(SoundReader& reader, SoundWriter& writer, ProgressBar& progress) {
    const std::uint32_t frames = largestBuffer(reader, report.bufferFrames);
    EngineBuffers buffers(report.input.format, report.output.format, frames);
    object.lock(buffers);
    const Pace pace(report.input.format.sampleRate);
    while (const std::uint32_t count = reader.read(buffers.input().data(), frames)) {
        throwIfInterrupted();
        if (isPaced) {
            pace.waitFor(report.frames);
        }
        makeChanges();
        playBuffer(buffers, count);
        writer.write(buffers.output(count).data(), count);
        report.frames += count;
        progress.update(report.frames);
    }
    checkAllMade();
    report.engine = module.use();
    object.unlock();
}

void Playback::playBuffer(EngineBuffers& buffers, std::uint32_t frames) {
    if (report.peaks) {
        report.peaks->input.follow(buffers.input(frames));
    }
    const std::span<const float> before = buffers.input(frames);
    const std::vector<float> original(isModuleNew ? before.begin() : before.end(), before.end());
    const auto begin = steady_clock::now();
    object.process(buffers, frames);
    report.timings.add(nanoseconds(steady_clock::now() - begin));
    if (report.peaks) {
        report.peaks->output.follow(buffers.output(frames));
    }
    if (std::exchange(isModuleNew, false) &&
        isCarriedOver(buffers.inputFormat(), original, buffers.outputFormat(), buffers.output(frames))) {
        module.checkInstance();
    }
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
    made.times = endpoint.changePreset(object, change.preset);
    isModuleNew = true;  // or may be
}

void Playback::make(const VolumeChange& change, ReportedChange& made) {
    made.volume = change.scalar;
    object.notifyVolume(change.scalar);
}

}  // namespace korva::tool
