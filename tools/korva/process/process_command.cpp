#include "korva/process/process_command.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>
#include <variant>
#include <vector>

#include "korva/errors.h"
#include "korva/host/audio_object_library.h"
#include "korva/interruption.h"
#include "korva/library_option.h"
#include "korva/preset/effect_class.h"
#include "korva/process/kernel_choice.h"
#include "korva/process/linked_modules.h"
#include "korva/process/playback.h"
#include "korva/process/played_endpoint.h"
#include "korva/process/played_module.h"
#include "korva/process/process_report.h"
#include "korva/process/sound_reader.h"
#include "korva/process/sound_writer.h"
#include "korva/process/stream_events.h"
#include "korva/progress_bar.h"
#include "korva/standard_streams.h"
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

/// None where modules lie beside the library.
std::optional<std::filesystem::path> parseModuleFolder(const ProcessOptions& options) {
    if (!options.hasModuleFolder) {
        return std::nullopt;
    }
    const std::string& name = options.moduleFolder;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::absolute(name, error);
    if (!std::filesystem::is_directory(folder, error)) {
        fail("--module-dir takes a folder, not '{}'", name);
    }
    return folder;
}

Generation parseGeneration(const std::string& text) {
    if (text != "2" && text != "3") {
        fail("--generation takes 2 or 3, not '{}'", text);
    }
    return text == "2" ? Generation::second : Generation::third;
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
          generation(parseGeneration(options.generation)),
          library(libraryFile(options.hasLibrary, options.library)),
          moduleFolder(parseModuleFolder(options)),
          events(parseEvents(options)) {}

    std::uint32_t bufferFrames;
    std::uint32_t outputMask;  ///< 0: the input's own.
    params::EffectKind effect;
    Generation generation;
    std::filesystem::path library;
    std::optional<std::filesystem::path> moduleFolder;  ///< None: the library's.
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
void checkEngines(const std::vector<StreamEvent>& events, const EngineChoice& now) {
    std::string engine = now.isMade() ? platform::guidText(now.engineId) : std::string();
    bool hardware = now.wantsHardware();
    for (const StreamEvent& event : events) {
        const auto* const change = std::get_if<PresetChange>(&event.change);
        if (change == nullptr) {
            continue;
        }
        const std::string next = platform::guidText(change->preset.engineId);
        if (!engine.empty() && next != engine) {
            fail("--change {}: this preset is for the engine {}, and {} plays", change->file, next, engine);
        }
        if (!engine.empty() && change->preset.hardware != hardware) {
            fail("--change {}: a preset with another 'hardware' takes no effect while sound plays",
                 change->file);
        }
        engine = next;
        hardware = change->preset.hardware;
    }
}

/// The object's library, with the modules that it is to find beside itself.
struct Hosting {
    explicit Hosting(const Settings& settings)
        : links(settings.moduleFolder
                    ? std::make_unique<const LinkedModules>(settings.library, *settings.moduleFolder)
                    : nullptr),
          file(links ? links->library() : settings.library),
          library(file, settings.library),
          shownModuleFolder(settings.moduleFolder.value_or(settings.library.parent_path())) {}

    [[nodiscard]] std::filesystem::path moduleFolder() const { return file.parent_path(); }

    const std::unique_ptr<const LinkedModules> links;  ///< Before the library, which goes first.
    const std::filesystem::path file;
    const AudioObjectLibrary library;
    const std::filesystem::path shownModuleFolder;
};

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
    const std::string kernels = chosenKernels();
    SoundReader reader(options.input);
    checkEvents(settings, reader);
    PlayedEndpoint endpoint(options.endpoint, options.preset, settings.effect);
    const Hosting hosting(settings);
    const CLSID& classId = effectClass(settings.effect);
    AudioObject object(hosting.library.createObject(classId));
    object.initialize(classId, settings.generation, endpoint.device());
    const PlayedModule module(endpoint.id(), settings.effect, hosting.moduleFolder(),
                              hosting.shownModuleFolder);
    const EngineUse atFirst = module.use();
    checkEngines(settings.events, atFirst.choice);
    module.checkLoaded(atFirst);
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
                         .kernels = kernels,
                         .endpoint = endpoint.id(),
                         .library = settings.library.string(),
                         .moduleFolder = hosting.shownModuleFolder.string(),
                         .peaks = options.meters ? std::optional(Peaks(in, out)) : std::nullopt};
    Playback playback(object, module, endpoint, settings.events, report);
    if (options.atItsOwnPace) {
        playback.keepPace();
    }
    playback.play(reader, writer, progress);
    module.checkLoaded(report.engine);  // that of an engine which came with a change
    writer.finish();
    progress.finish();
    print(options, report, writer.goesToStandardOutput());
}

}  // namespace korva::tool
