// How `korva process` reads on the command line.
#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

#include "korva/command.h"
#include "korva/process/process_command.h"

namespace korva::tool {
namespace {

constexpr const char* example =
    "Speakers are taken from the input where it names them. OUT's ending says what is written: .wav, .w64, "
    ".rf64,\n"
    ".aif, .au or .caf (32-bit float), .flac (24-bit), .ogg, .opus or .mp3; without an ending it is a WAV "
    "file.\n"
    "OUT appears when it is complete, and not at all if something fails.\n"
    "\n"
    "Without --endpoint and --preset no module is loaded: the sound is folded to the output's speakers.\n"
    "\n"
    "Examples: folding a film's 7.1 sound to stereo, with the levels of both; and playing it through a\n"
    "preset of the equaliser that changes after two seconds:\n"
    "  korva process film.wav stereo.wav --output-layout stereo --meters\n"
    "  korva process stereo.wav louder.wav --effect mfx --preset eq.json --change 2=loud.json \\\n"
    "      --module-dir build/release/modules\n";

/// What leads to a DSP module, and what changes while it plays.
void addModuleOptions(CLI::App& process, ProcessOptions& options) {
    auto* const endpoint =
        process
            .add_option("--endpoint", options.endpoint,
                        "Play through the preset of this endpoint ('korva endpoint list' shows them)")
            ->type_name("ID");
    process
        .add_option("--preset", options.preset,
                    "Play through this preset, on an endpoint that is there as long as it plays")
        ->type_name("FILE")
        ->excludes(endpoint);
    process
        .add_option("--module-dir", options.moduleFolder,
                    "Where DSP modules lie; else where the object's library lies")
        ->type_name("DIR");
    const auto addTimed = [&](const char* name, std::vector<std::string>& texts, const char* form,
                              const char* does) {
        process.add_option(name, texts, does)
            ->type_name(form)
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    };
    addTimed("--change", options.changes, "SECONDS=FILE",
             "Install another preset at that point of the sound; may be repeated");
    addTimed("--volume", options.volumes, "SECONDS=SCALAR",
             "Tell of a master volume, 0 to 1, at that point of the sound; may be repeated");
}

CLI::App* declare(CLI::App& line, ProcessOptions& options) {
    CLI::App* const process = line.add_subcommand(
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
    process
        ->add_option("--library", options.library,
                     "The library that has the object; else the one beside this tool")
        ->type_name("FILE");
    process
        ->add_option("--generation", options.generation,
                     "Generation of the record that the object is initialised with, 2 or 3")
        ->type_name("NUMBER")
        ->capture_default_str();
    process->add_option("--buffer", options.bufferFrames, "Frames in one buffer of the engine, 1 to 1000000")
        ->type_name("FRAMES")
        ->capture_default_str();
    addModuleOptions(*process, options);
    process
        ->add_flag("--realtime", options.atItsOwnPace,
                   "Send each buffer when its time has come, so that others can watch (korva monitor)")
        ->disable_flag_override();
    process
        ->add_flag("--meters", options.meters,
                   "Run the level meters and show the highest level of each speaker")
        ->disable_flag_override();
    auto* const json = process->add_flag("--json", options.json, "Print the report as one JSON value")
                           ->disable_flag_override();
    process->add_flag("--quiet", options.quiet, "Print nothing when all went well")
        ->excludes(json)
        ->disable_flag_override();
    process->footer(example);
    return process;
}

}  // namespace

void addProcess(CLI::App& line, Commands& commands) {
    const auto options = std::make_shared<ProcessOptions>();
    const CLI::App* const declaration = declare(line, *options);
    commands.push_back({declaration, [options, declaration] {
                            options->hasEndpoint = declaration->count("--endpoint") != 0;
                            options->hasPreset = declaration->count("--preset") != 0;
                            options->hasLibrary = declaration->count("--library") != 0;
                            options->hasModuleFolder = declaration->count("--module-dir") != 0;
                            runProcess(*options);
                            return 0;
                        }});
}

}  // namespace korva::tool
