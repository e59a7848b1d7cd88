// How `korva module` reads on the command line, and what it does.
#include <CLI/CLI.hpp>

#include <memory>
#include <string>

#include "korva/command.h"
#include "korva/module/module_info.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

struct InfoOptions {
    std::string path{};
    bool json = false;
};

constexpr const char* infoNotes =
    "Nothing of the module is run: its file is read, and the system's loader goes through what it needs.\n"
    "The exit code is 1 if the audio object would use nothing of it, and 2 if PATH can't be read.\n";

int runInfo(const InfoOptions& options) {
    const ModuleInfo info = readModuleInfo(options.path);
    printOutput(options.json ? moduleInfoJson(info) : moduleInfoText(info));
    return info.fault().empty() ? 0 : 1;
}

void addInfo(CLI::App& group, Commands& commands) {
    const auto options = std::make_shared<InfoOptions>();
    CLI::App* const info = group.add_subcommand(
        "info", "Show what a module exports, what it lacks and what that costs, and what it needs");
    info->add_option("PATH", options->path, "The module's file")->required()->type_name("");
    info->add_flag("--json", options->json, "Print one JSON value")->disable_flag_override();
    info->footer(infoNotes);
    commands.push_back({info, [options] { return runInfo(*options); }});
}

}  // namespace

void addModule(CLI::App& line, Commands& commands) {
    CLI::App* const group = line.add_subcommand("module", "Look at a DSP module");
    group->require_subcommand(1);
    addInfo(*group, commands);
}

}  // namespace korva::tool
