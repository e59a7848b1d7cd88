// How `korva module ...` reads on the command line.
#include <CLI/CLI.hpp>

#include <cmath>
#include <memory>
#include <random>
#include <string>

#include "korva/command.h"
#include "korva/errors.h"
#include "korva/module/check/module_check.h"
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

constexpr const char* examples =
    "A DSP module is a shared library; docs/modules.md explains how one is written.\n"
    "\n"
    "Examples:\n"
    "  korva module info ./effect.so\n"
    "  korva module check ./effect.so\n"
    "  korva module check ./effect.so --only bounds,realtime --seed 7\n";

int runCheck(ModuleCheckOptions options, bool hasSeed) {
    if (options.path.empty() && !options.list) {
        fail("PATH is required; see 'korva module check --help'");
    }
    if (std::isnan(options.timeoutSeconds)) {  // It passes for a number of the range.
        fail("--timeout takes seconds, not 'nan'; see 'korva module check --help'");
    }
    if (!hasSeed) {
        options.seed = std::random_device{}();
    }
    return runModuleCheck(options);
}

void addCheck(CLI::App& group, Commands& commands) {
    const auto options = std::make_shared<ModuleCheckOptions>();
    CLI::App* const check = group.add_subcommand(
        "check", "Put a module through a conformance run, a line a check; exit code 1 if one fails");
    check->add_option("PATH", options->path, "The module's file")->type_name("");
    check->add_option("--only", options->only, "Run these checks only, with commas between them")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("NAME[,NAME...]");
    check->add_flag("--list", options->list, "Say what the checks are, and run none")
        ->disable_flag_override();
    const CLI::Option* const seed =
        check->add_option("--seed", options->seed, "Begin of the random numbers, to repeat a run")
            ->type_name("N");
    check->add_option("--timeout", options->timeoutSeconds, "What a check may take")
        ->capture_default_str()
        ->check(CLI::Range(0.001, 86'400.0))
        ->type_name("SECONDS");
    check->add_flag("--json", options->json, "Print one JSON value")->disable_flag_override();
    commands.push_back({check, [options, seed] { return runCheck(*options, seed->count() > 0); }});
}

}  // namespace

void addModule(CLI::App& line, Commands& commands) {
    CLI::App* const group = line.add_subcommand("module", "Look at a DSP module, and try it");
    group->require_subcommand(1);
    group->footer(examples);
    addInfo(*group, commands);
    addCheck(*group, commands);
}

}  // namespace korva::tool
