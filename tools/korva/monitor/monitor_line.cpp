// How `korva monitor` reads on the command line.
#include <CLI/CLI.hpp>

#include <memory>

#include "korva/command.h"
#include "korva/monitor/monitor_command.h"

namespace korva::tool {
namespace {

constexpr const char* notes =
    "On a terminal it shows all live instances until q or Ctrl-C; else, as with --once, one table. While it "
    "watches it\n"
    "turns metering on. An instance is an audio object of any process; its key in the registry tells all of "
    "this.\n"
    "\n"
    "NAME of --request is DSPCycleCount, DSPFrameCount, ParamBytesSentByDSP, ParamBytesReceivedByDSP or "
    "LevelMeters.\n"
    "The exit code is 1 if an instance gave no answer and never had one in its key.\n"
    "\n"
    "Examples:\n"
    "  korva monitor\n"
    "  korva monitor --json --interval 1000 > levels.jsonl\n"
    "  korva monitor --sweep\n";

using Options = std::shared_ptr<MonitorOptions>;

CLI::Option* addFlag(CLI::App& command, const char* name, bool& flag, const char* description) {
    return command.add_flag(name, flag, description)->disable_flag_override();
}

void addWhatIsShown(CLI::App& command, const Options& options) {
    addFlag(command, "--json", options->json, "Print a JSON object on a line for each look, until stopped");
    command.add_option("--interval", options->intervalMs, "Between two looks: 10 to 60000; else 100")
        ->check(CLI::Range(10, 60000))
        ->type_name("MS");
    command.add_option("--instance", options->instance, "Only this one; braces and capitals don't matter")
        ->type_name("GUID");
}

void addWhatIsDone(CLI::App& command, const Options& options) {
    CLI::Option* const once = addFlag(command, "--once", options->once, "Look once, and print that");
    CLI::Option* const request =
        command.add_option("--request", options->request, "Ask for one counter, and print the answer")
            ->type_name("NAME")
            ->excludes(once);
    CLI::Option* const stale =
        addFlag(command, "--stale", options->stale, "List the keys that dead processes left")
            ->excludes(once)
            ->excludes(request);
    CLI::Option* const sweep =
        addFlag(command, "--sweep", options->sweep, "Remove those keys; asks before it does")
            ->excludes(once)
            ->excludes(request)
            ->excludes(stale);
    addFlag(command, "--yes", options->yes, "Remove them without asking")->needs(sweep);
}

}  // namespace

void addMonitor(CLI::App& line, Commands& commands) {
    const auto options = std::make_shared<MonitorOptions>();
    CLI::App* const command =
        line.add_subcommand("monitor", "Watch live audio objects: levels, load, formats");
    addWhatIsShown(*command, options);
    addWhatIsDone(*command, options);
    command->footer(notes);
    commands.push_back({command, [options] { return runMonitor(*options); }});
}

}  // namespace korva::tool
