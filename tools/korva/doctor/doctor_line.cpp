// How `korva doctor` reads on the command line.
#include <CLI/CLI.hpp>

#include <memory>

#include "korva/command.h"
#include "korva/doctor/doctor_command.h"

namespace korva::tool {
namespace {

constexpr const char* notes =
    "It looks at the registry's file, the library and its registration, what endpoints are set to, the DSP "
    "modules\n"
    "beside the library, what live objects need to show themselves, and the processor. It changes nothing. "
    "The exit\n"
    "code is 0 if it finds no fault, 1 if it finds one, and 2 if it can't look.\n";

}  // namespace

void addDoctor(CLI::App& line, Commands& commands) {
    const auto options = std::make_shared<DoctorOptions>();
    CLI::App* const command =
        line.add_subcommand("doctor", "Look for what makes sound go wrong, and say what helps");
    command->add_option("--library", options->library, "The library; else the object's, beside this tool")
        ->type_name("FILE");
    command->add_flag("--json", options->json, "Print the findings as one JSON value")
        ->disable_flag_override();
    command->footer(notes);
    commands.push_back({command, [options, command] {
                            options->hasLibrary = command->count("--library") != 0;
                            return runDoctor(*options);
                        }});
}

}  // namespace korva::tool
