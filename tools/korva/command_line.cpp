#include "korva/command_line.h"

#include <CLI/CLI.hpp>

#include "korva/errors.h"
#include "korva/process_command.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

constexpr const char* processExample =
    "Speakers are taken from the input where it names them. OUT's ending says what is written: .wav, .w64, "
    ".rf64,\n"
    ".aif, .au or .caf (32-bit float), .flac (24-bit), .ogg, .opus or .mp3; without an ending it is a WAV "
    "file.\n"
    "OUT appears when it is complete, and not at all if something fails.\n"
    "\n"
    "Example, which folds a film's 7.1 sound to stereo and shows the levels of both:\n"
    "  korva process film.wav stereo.wav --output-layout stereo --meters\n";

CLI::App* addProcess(CLI::App& app, ProcessOptions& options) {
    CLI::App* const process = app.add_subcommand(
        "process",
        "Play the audio engine: send the sound file IN through the audio object, buffer by buffer, to OUT");
    process->add_option("IN", options.input, "Sound file of 1 to 8 channels")->required()->type_name("");
    process->add_option("OUT", options.output, "Sound file to write; may be IN itself")
        ->required()
        ->type_name("");
    process
        ->add_option("--effect", options.effect,
                     "Place of the object: sfx (stream), mfx (mode) or efx (endpoint)")
        ->type_name("KIND")
        ->capture_default_str();
    process
        ->add_option(
            "--output-layout", options.outputLayout,
            "mono, stereo, quad, 5.1, 5.1-side, 7.1 or a mask of speakers such as 0x3F; else as the input")
        ->type_name("LAYOUT");
    process->add_option("--buffer", options.bufferFrames, "Frames in one buffer of the engine, 1 to 1000000")
        ->type_name("FRAMES")
        ->capture_default_str();
    process
        ->add_flag("--meters", options.meters,
                   "Run the level meters and show the highest level of each speaker")
        ->disable_flag_override();
    auto* const json = process->add_flag("--json", options.json, "Print the report as one JSON value")
                           ->disable_flag_override();
    process->add_flag("--quiet", options.quiet, "Print nothing when all went well")
        ->excludes(json)
        ->disable_flag_override();
    process->footer(processExample);
    return process;
}

/// What the user typed that nothing takes.
std::string surplusText(const CLI::App& app) {
    const std::string word = app.remaining(true).front();
    if (word.starts_with("-")) {
        return fmt::format("unknown option '{}'", word);
    }
    return fmt::format("{} '{}'",
                       app.get_subcommands().empty() ? "unknown subcommand" : "unexpected argument", word);
}

[[noreturn]] void failOnLine(const CLI::App& app, const CLI::ParseError& error) {
    const bool inSubcommand = !app.get_subcommands().empty();
    // What is missing matters only once the rest is understood.
    const std::string what = app.remaining(true).empty() ? error.what() : surplusText(app);
    fail("{}; see 'korva {}--help'", what, inSubcommand ? "process " : "");
}

}  // namespace

int runCommandLine(int argumentCount, const char* const* arguments) {
    CLI::App app("Hosts the Korva audio object.", "korva");
    app.set_version_flag("--version", "korva " KORVA_VERSION);
    app.require_subcommand(1);
    ProcessOptions options;
    const CLI::App* const process = addProcess(app, options);
    try {
        app.parse(argumentCount, arguments);
    } catch (const CLI::CallForHelp&) {
        printOutput(app.help());
        return 0;
    } catch (const CLI::CallForVersion& version) {
        printOutput(std::string(version.what()) + "\n");
        return 0;
    } catch (const CLI::ParseError& error) {
        failOnLine(app, error);
    }
    if (process->parsed()) {
        runProcess(options);
    }
    return 0;
}

}  // namespace korva::tool
