#include "korva/process/process_command.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <optional>
#include <vector>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/process/hosted_object.h"
#include "korva/process/process_report.h"
#include "korva/process/sound_reader.h"
#include "korva/process/sound_writer.h"
#include "korva/progress_bar.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

constexpr std::uint32_t maxBufferFrames = 1'000'000;

std::uint32_t parseBufferFrames(const std::string& text) {
    std::uint32_t frames = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, frames);
    if (error != std::errc() || stop != end || frames < 1 || frames > maxBufferFrames) {
        fail("--buffer takes 1 to {} frames, not '{}'", maxBufferFrames, text);
    }
    return frames;
}

void checkEffect(const std::string& effect) {
    constexpr std::array effects = {"sfx", "mfx", "efx"};
    if (std::ranges::find(effects, effect) == effects.end()) {
        fail("--effect takes sfx, mfx or efx, not '{}'", effect);
    }
}

/// Options that stand for themselves, checked before any file is touched.
struct Settings {
    explicit Settings(const ProcessOptions& options)
        : bufferFrames(parseBufferFrames(options.bufferFrames)),
          outputMask(options.outputLayout.empty() ? 0 : parseLayout(options.outputLayout)) {
        checkEffect(options.effect);
    }

    std::uint32_t bufferFrames;
    std::uint32_t outputMask;  ///< 0: the input's own.
};

SoundFormat withMask(SoundFormat format) {
    if (format.mask == 0) {
        format.mask = rt::defaultSpeakerMask(static_cast<std::int32_t>(format.channels));
    }
    return format;
}

SoundFormat outputFormat(const ProcessOptions& options, const Settings& settings, const SoundFormat& in) {
    if (settings.outputMask == 0) {
        return in;
    }
    const auto channels = static_cast<std::uint32_t>(std::popcount(settings.outputMask));
    if (options.effect != "sfx" && channels != in.channels) {
        fail(
            "--output-layout {} has {} channels and the input {}: only a stream effect, --effect sfx, may "
            "change "
            "their number",
            options.outputLayout, channels, in.channels);
    }
    return {in.sampleRate, channels, settings.outputMask};
}

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

/// The stream from lock to unlock.
void play(HostedObject& object, SoundReader& reader, SoundWriter& writer, ProgressBar& progress,
          ProcessReport& report) {
    const std::uint32_t frames = largestBuffer(reader, report.bufferFrames);
    EngineBuffers buffers(report.input.format, report.output.format, frames);
    object.lock(report.input.format, report.output.format, frames, report.peaks.has_value());
    while (const std::uint32_t count = reader.read(buffers.inputData(), frames)) {
        throwIfInterrupted();
        buffers.processWith(object, count);
        report.timings.add(object.lastProcessNs());
        if (report.peaks) {
            object.raise(*report.peaks);
        }
        writer.write(buffers.outputData(), count);
        report.frames += count;
        progress.update(report.frames);
    }
    object.unlock();
}

/// Where the sound goes to standard output, the report must not follow it there.
void print(const ProcessOptions& options, ProcessReport& report, bool soundOnStandardOutput) {
    if (options.json) {
        printOutput(asJson(report));
    } else if (!options.quiet && soundOnStandardOutput) {
        std::fputs(asText(report).c_str(), stderr);
    } else if (!options.quiet) {
        printOutput(asText(report));
    }
}

}  // namespace

void runProcess(const ProcessOptions& options) {
    const Settings settings(options);
    HostedObject object;
    SoundReader reader(options.input);
    const SoundFormat in = withMask(reader.format());
    const SoundFormat out = outputFormat(options, settings, in);
    SoundWriter writer(options.output, out, reader.frames());
    if (options.json && writer.goesToStandardOutput()) {
        fail("--json and OUT both need standard output; let OUT be a file");
    }
    ProgressBar progress(!options.quiet && !options.json && isTerminal(stderr) ? stderr : nullptr,
                         reader.frames());
    ProcessReport report{.input = {options.input, reader.kind(), in},
                         .output = {options.output, writer.kind(), out},
                         .effect = options.effect,
                         .bufferFrames = settings.bufferFrames,
                         .kernels = std::string(object.kernelsName()),
                         .codeLocked = object.isCodeLocked(),
                         .peaks = options.meters ? std::optional(Peaks{}) : std::nullopt};
    play(object, reader, writer, progress, report);
    writer.finish();
    progress.finish();
    print(options, report, writer.goesToStandardOutput());
}

}  // namespace korva::tool
