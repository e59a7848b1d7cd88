#include "korva/process/process_command.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/preset/effect_class.h"
#include "korva/process/hosted_object.h"
#include "korva/process/playback.h"
#include "korva/process/played_endpoint.h"
#include "korva/process/process_report.h"
#include "korva/process/sound_reader.h"
#include "korva/process/sound_writer.h"
#include "korva/process/stream_events.h"
#include "korva/progress_bar.h"
#include "korva/standard_streams.h"
#include "platform/module_library.h"
#include "platform/property_key.h"

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

params::EffectKind parseEffect(const std::string& name) {
    const std::optional<params::EffectKind> kind = effectOfName(name);
    if (!kind) {
        fail("--effect takes sfx, mfx or efx, not '{}'", name);
    }
    return *kind;
}

std::filesystem::path parseModuleFolder(const ProcessOptions& options) {
    if (!options.hasModuleFolder) {
        return platform::ownLibraryFolder();
    }
    const std::string& name = options.moduleFolder;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::absolute(name, error);
    if (!std::filesystem::is_directory(folder, error)) {
        fail("--module-dir takes a folder, not '{}'", name);
    }
    return folder;
}

std::vector<StreamEvent> parseEvents(const ProcessOptions& options) {
    if (options.hasEndpoint && options.endpoint.empty()) {
        fail("--endpoint takes an endpoint's identifier, not ''");
    }
    if (options.hasPreset && options.preset.empty()) {
        fail("--preset takes a file, not ''");
    }
    if (!options.hasEndpoint && !options.hasPreset &&
        !(options.changes.empty() && options.volumes.empty() && !options.hasModuleFolder)) {
        fail("--module-dir, --change and --volume need an endpoint: give --endpoint or --preset, too");
    }
    return readStreamEvents(options.changes, options.volumes);
}

/// Options that stand for themselves, checked before any sound is touched.
struct Settings {
    explicit Settings(const ProcessOptions& options)
        : bufferFrames(parseBufferFrames(options.bufferFrames)),
          outputMask(options.outputLayout.empty() ? 0 : parseLayout(options.outputLayout)),
          effect(parseEffect(options.effect)),
          moduleFolder(parseModuleFolder(options)),
          events(parseEvents(options)) {}

    std::uint32_t bufferFrames;
    std::uint32_t outputMask;  ///< 0: the input's own.
    params::EffectKind effect;
    std::filesystem::path moduleFolder;
    std::vector<StreamEvent> events;
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

/// A change that would come too late would never be made.
void checkEvents(const Settings& settings, const SoundReader& reader) {
    if (settings.events.empty() || !reader.frames()) {
        return;
    }
    const std::uint64_t lastBegin = (*reader.frames() - 1) / settings.bufferFrames * settings.bufferFrames;
    if (settings.events.back().frame(reader.format().sampleRate) > lastBegin) {
        failAsTooLate(settings.events.back());
    }
}

/// A running object keeps its engine and its platform: only an effect's identity brings others.
void checkEngines(const std::vector<StreamEvent>& events, EngineUse now) {
    for (const StreamEvent& event : events) {
        const auto* const change = std::get_if<PresetChange>(&event.change);
        if (change == nullptr) {
            continue;
        }
        const std::string next = platform::guidText(change->preset.engineId);
        if (!now.engineId.empty() && next != now.engineId) {
            fail("--change {}: this preset is for the engine {}, and {} plays", change->file, next,
                 now.engineId);
        }
        if (!now.engineId.empty() && change->preset.hardware != now.wantsHardware) {
            fail("--change {}: a preset with another 'hardware' takes no effect while sound plays",
                 change->file);
        }
        now.engineId = next;
        now.wantsHardware = change->preset.hardware;
    }
}

/// Sound that only passes isn't what was asked for.
void checkModule(const EngineUse& engine, const std::filesystem::path& folder) {
    if (engine.module.empty() || engine.isLoaded) {
        return;
    }
    const std::filesystem::path file = platform::libraryPath(folder, engine.module);
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        fail("there is no module '{}'; --module-dir says where modules lie", file.string());
    }
    fail("the module '{}' can't be loaded or makes no instance; see 'korva module check {}'", file.string(),
         file.string());
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
    SoundReader reader(options.input);
    checkEvents(settings, reader);
    PlayedEndpoint endpoint(options.endpoint, options.preset, settings.effect);
    HostedObject object(settings.effect, settings.moduleFolder);
    object.initialize(endpoint.id());
    checkEngines(settings.events, object.engineUse());
    checkModule(object.engineUse(), settings.moduleFolder);
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
                         .endpoint = endpoint.id(),
                         .moduleFolder = settings.moduleFolder.string(),
                         .peaks = options.meters ? std::optional(Peaks{}) : std::nullopt};
    Playback(object, endpoint, settings.events, report).play(reader, writer, progress);
    checkModule(report.engine, settings.moduleFolder);  // that of an engine which came with a change
    writer.finish();
    progress.finish();
    print(options, report, writer.goesToStandardOutput());
}

}  // namespace korva::tool
