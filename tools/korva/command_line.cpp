#include "korva/command_line.h"

#include <CLI/CLI.hpp>

#include <ranges>
#include <string>
#include <vector>

#include "korva/errors.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

/// The command that the line has come to: `korva registry list`, or as far as it was understood.
const CLI::App& deepest(const CLI::App& line) {
    const auto chosen = line.get_subcommands();
    return chosen.empty() ? line : deepest(*chosen.front());
}

/// The words that lead to a command, from the tool's own name on.
std::string wordsOf(const CLI::App& command) {
    const CLI::App* const parent = command.get_parent();
    return parent == nullptr ? command.get_name() : wordsOf(*parent) + " " + command.get_name();
}

/// What the user typed that nothing takes.
std::string surplusText(const CLI::App& line, const CLI::App& command) {
    const std::string word = line.remaining(true).front();
    if (word.starts_with("-")) {
        return fmt::format("unknown option '{}'", word);
    }
    const bool isGroup = !command.get_subcommands([](const CLI::App*) { return true; }).empty();
    return fmt::format("{} '{}'", isGroup ? "unknown subcommand" : "unexpected argument", word);
}

/// All but the program's own, as CLI11 takes them.
std::vector<std::string> wordsFromLast(const std::vector<std::string>& arguments) {
    const auto words = arguments | std::views::drop(1) | std::views::reverse;
    return {words.begin(), words.end()};
}

[[noreturn]] void failOnLine(const CLI::App& line, const CLI::ParseError& error) {
    const CLI::App& command = deepest(line);
    // What is missing matters only once the rest is understood.
    const std::string what = line.remaining(true).empty() ? error.what() : surplusText(line, command);
    fail("{}; see '{} --help'", what, wordsOf(command));
}

}  // namespace

int runCommandLine(const std::vector<std::string>& arguments, std::span<AddCommands* const> commandGroups) {
    CLI::App line("Hosts the Korva audio object.", "korva");
    line.set_version_flag("--version", "korva " KORVA_VERSION);
    line.require_subcommand(1);
    // On every system the same: what begins with a slash is a file.
    line.allow_windows_style_options(false);
    Commands commands;
    for (AddCommands* const add : commandGroups) {
        add(line, commands);
    }
    try {
        line.parse(wordsFromLast(arguments));
    } catch (const CLI::CallForHelp&) {
        printOutput(line.help());
        return 0;
    } catch (const CLI::CallForVersion& version) {
        printOutput(std::string(version.what()) + "\n");
        return 0;
    } catch (const CLI::ParseError& error) {
        failOnLine(line, error);
    }
    for (const Command& command : commands) {
        if (command.declaration->parsed()) {
            return command.run();
        }
    }
    return 0;
}

}  // namespace korva::tool
