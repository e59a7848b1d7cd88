// How `korva endpoint ...` reads on the command line.
#include <CLI/CLI.hpp>

#include <memory>

#include "korva/command.h"
#include "korva/endpoint/endpoint_commands.h"

namespace korva::tool {
namespace {

using Options = std::shared_ptr<EndpointOptions>;

constexpr const char* examples =
    "Endpoints are in the registry, see docs/endpoints.md.\n"
    "\n"
    "Examples:\n"
    "  id=$(korva endpoint add Speakers --volume 0.5 | tail -n 1)\n"
    "  korva preset install equaliser.json --endpoint \"$id\" --effect mfx\n"
    "  korva endpoint show \"$id\"\n"
    "  korva endpoint remove \"$id\"\n";

struct Declaration {
    CLI::App& group;
    Commands& commands;

    CLI::App& add(const char* name, const char* description, const Options& options,
                  int (*run)(const EndpointOptions&)) const {
        CLI::App* const command = group.add_subcommand(name, description);
        command->add_flag("--json", options->json, "Print one JSON value")->disable_flag_override();
        commands.push_back({command, [options, command, run] {
                                options->hasName = given(*command, "--name");
                                options->hasVolume = given(*command, "--volume");
                                return run(*options);
                            }});
        return *command;
    }

    static bool given(const CLI::App& command, const char* option) {
        const CLI::Option* const found = command.get_option_no_throw(option);
        return found != nullptr && found->count() != 0;
    }
};

void addId(CLI::App& command, const Options& options) {
    command.add_option("ID", options->id, "Identifier of the endpoint")->required()->type_name("");
}

void addVolume(CLI::App& command, const Options& options, const char* description) {
    command.add_option("--volume", options->volume, description)->type_name("SCALAR");
}

void addAdd(const Declaration& declaration) {
    const auto options = std::make_shared<EndpointOptions>();
    CLI::App& add = declaration.add(
        "add", "Make an endpoint with empty sets of properties; its identifier is the last line printed",
        options, runEndpointAdd);
    add.add_option("NAME", options->name, "What users know it by")->required()->type_name("");
    add.add_flag("--capture", options->capture, "One that records; else one that plays")
        ->disable_flag_override();
    add.add_flag("--inactive", options->inactive, "Disabled at first")->disable_flag_override();
    addVolume(add, options, "0 to 1; else 1");
}

void addSet(const Declaration& declaration) {
    const auto options = std::make_shared<EndpointOptions>();
    CLI::App& set =
        declaration.add("set", "Change an endpoint, and print what it is then", options, runEndpointSet);
    addId(set, options);
    set.add_option("--name", options->name, "What users know it by")->type_name("NAME");
    addVolume(set, options, "0 to 1");
    CLI::Option* const active =
        set.add_flag("--active", options->active, "Make it ready to use")->disable_flag_override();
    set.add_flag("--inactive", options->inactive, "Disable it")->excludes(active)->disable_flag_override();
}

}  // namespace

void addEndpoint(CLI::App& line, Commands& commands) {
    CLI::App* const group = line.add_subcommand("endpoint", "List, add and change audio endpoints");
    group->require_subcommand(1);
    group->footer(examples);
    const Declaration declaration{*group, commands};
    addAdd(declaration);
    declaration.add("list", "Show all endpoints: identifier, flow, state, volume, name",
                    std::make_shared<EndpointOptions>(), runEndpointList);
    const auto shown = std::make_shared<EndpointOptions>();
    addId(declaration.add("show", "Show an endpoint and which of its effects have a preset", shown,
                          runEndpointShow),
          shown);
    addSet(declaration);
    const auto removed = std::make_shared<EndpointOptions>();
    addId(declaration.add("remove", "Delete an endpoint and its sets of properties", removed,
                          runEndpointRemove),
          removed);
}

}  // namespace korva::tool
