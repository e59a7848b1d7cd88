// How `korva preset ...` reads on the command line.
#include <CLI/CLI.hpp>

#include <memory>

#include "korva/command.h"
#include "korva/preset/preset_command.h"

namespace korva::tool {
namespace {

using Options = std::shared_ptr<PresetOptions>;

constexpr const char* examples =
    "A preset is JSON text; docs/presets.md explains it, and 'korva catalogue' shows what can be set.\n"
    "\n"
    "Examples:\n"
    "  korva preset check equaliser.json\n"
    "  korva preset install equaliser.json --endpoint speakers --effect efx\n"
    "  korva preset dump --endpoint speakers --effect efx > now.json\n";

struct Declaration {
    CLI::App& group;
    Commands& commands;

    CLI::App& add(const char* name, const char* description, const Options& options,
                  int (*run)(const PresetOptions&)) const {
        CLI::App* const command = group.add_subcommand(name, description);
        commands.push_back({command, [options, run] { return run(*options); }});
        return *command;
    }
};

void addFile(CLI::App& command, const Options& options) {
    command.add_option("FILE", options->file, "Preset as JSON; - is standard input")
        ->required()
        ->type_name("");
}

CLI::Option* addJson(CLI::App& command, const Options& options) {
    return command.add_flag("--json", options->json, "Print one JSON value")->disable_flag_override();
}

void addEndpoint(CLI::App& command, const Options& options) {
    command.add_option("--endpoint", options->endpoint, "Identifier of the endpoint")
        ->required()
        ->type_name("ID");
    command.add_option("--effect", options->effect, "sfx (stream), mfx (mode) or efx (endpoint)")
        ->required()
        ->type_name("KIND");
}

void addCheck(const Declaration& declaration) {
    const auto options = std::make_shared<PresetOptions>();
    CLI::App& check =
        declaration.add("check", "Name all faults of a preset, a line each; exit code 1 if there are any",
                        options, runPresetCheck);
    addFile(check, options);
    addJson(check, options);
}

void addInstall(const Declaration& declaration) {
    const auto options = std::make_shared<PresetOptions>();
    CLI::App& install = declaration.add("install", "Set an effect of an endpoint to a preset, all at once",
                                        options, runPresetInstall);
    addFile(install, options);
    addEndpoint(install, options);
    CLI::Option* const json = addJson(install, options);
    install.add_flag("--quiet", options->quiet, "Print nothing when all went well")
        ->excludes(json)
        ->disable_flag_override();
}

void addDump(const Declaration& declaration) {
    const auto options = std::make_shared<PresetOptions>();
    CLI::App& dump = declaration.add(
        "dump", "Print what an effect of an endpoint is set to, as JSON that can be installed", options,
        runPresetDump);
    addEndpoint(dump, options);
}

}  // namespace

void addPreset(CLI::App& line, Commands& commands) {
    CLI::App* const group =
        line.add_subcommand("preset", "Check presets, and set effects of endpoints to them");
    group->require_subcommand(1);
    group->footer(examples);
    const Declaration declaration{*group, commands};
    addCheck(declaration);
    addInstall(declaration);
    addDump(declaration);
}

}  // namespace korva::tool
