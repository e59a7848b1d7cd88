// How `korva register` and `korva unregister` read on the command line.
#include <CLI/CLI.hpp>

#include <memory>
#include <string>

#include "korva/command.h"
#include "korva/registration/registration_commands.h"

namespace korva::tool {
namespace {

void addCommand(CLI::App& line, Commands& commands, const char* name, const char* does,
                Registration registration) {
    const auto options = std::make_shared<RegistrationOptions>();
    CLI::App* const command = line.add_subcommand(name, does);
    command->add_option("--library", options->library, "The library; else the object's, beside this tool")
        ->type_name("FILE");
    command->add_flag("--json", options->json, "Print the report as one JSON value")->disable_flag_override();
    commands.push_back({command, [options, command, registration] {
                            options->hasLibrary = command->count("--library") != 0;
                            runRegistration(registration, *options);
                            return 0;
                        }});
}

}  // namespace

void addRegistration(CLI::App& line, Commands& commands) {
    addCommand(
        line, commands, "register",
        "Have a library of audio objects write its classes into the registry, for audio engines to find",
        Registration::add);
    addCommand(line, commands, "unregister", "Have it take them out of the registry again",
               Registration::remove);
}

}  // namespace korva::tool
