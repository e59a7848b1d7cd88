// How `korva registry ...` reads on the command line.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

#include "korva/command.h"
#include "korva/registry/registry_commands.h"
#include "platform/registry_words.h"

namespace korva::tool {
namespace {

using Options = std::shared_ptr<RegistryOptions>;

constexpr const char* keyNotes =
    "A KEY begins with HKLM, HKCU or HKCR (or its long name) and goes on with backslashes, so quote it. The NAME "
    "@ is\n"
    "the key's default value. ";

constexpr const char* examples =
    "\n"
    "Examples:\n"
    "  korva registry set 'HKLM\\Software\\Demo' volume dword 40\n"
    "  korva registry list 'HKLM\\Software\\Demo'\n"
    "  korva registry export 'HKLM\\Software\\Demo' > demo.reg\n"
    "  korva registry import demo.reg\n";

constexpr const char* setNotes =
    "TYPE and its DATA:\n"
    "  sz        one text\n"
    "  dword     0 to 4294967295, in decimal or as 0x...\n"
    "  qword     0 to 18446744073709551615, likewise\n"
    "  binary    two hexadecimal digits for each byte, such as 00ff12; may be left out\n"
    "  multi_sz  any number of texts, none of them empty\n"
    "Example:\n"
    "  korva registry set 'HKLM\\Software\\Demo' files multi_sz one.wav two.wav\n";

constexpr const char* transferNotes =
    "The text is 'Windows Registry Editor Version 5.00', which Windows and Wine (regedit) take and give. Import "
    "reads\n"
    "UTF-16 with its byte order mark and UTF-8; export writes the former, which both of them read to the byte.\n";

struct Declaration {
    CLI::App& group;
    Commands& commands;

    CLI::App& add(const char* name, const char* description, const Options& options,
                  void (*run)(const RegistryOptions&)) const {
        CLI::App* const command = group.add_subcommand(name, description);
        commands.push_back({command, [options, run] {
                                run(*options);
                                return 0;
                            }});
        return *command;
    }
};

void addKey(CLI::App& command, const Options& options) {
    command.add_option("KEY", options->key, "Such as 'HKLM\\Software\\Demo'")->required()->type_name("");
}

CLI::Option* addName(CLI::App& command, const Options& options) {
    return command.add_option("NAME", options->name, "Of the value; @ is the key's default value")
        ->type_name("");
}

void addJson(CLI::App& command, const Options& options, const char* description) {
    command.add_flag("--json", options->json, description)->disable_flag_override();
}

void addList(const Declaration& declaration) {
    const auto options = std::make_shared<RegistryOptions>();
    CLI::App& list = declaration.add("list", "Show a key's sub-keys and values", options, runRegistryList);
    addKey(list, options);
    addJson(list, options, "Print one JSON value");
}

void addGet(const Declaration& declaration) {
    const auto options = std::make_shared<RegistryOptions>();
    CLI::App& get = declaration.add("get", "Print a value's data: text, decimal number or hexadecimal bytes",
                                    options, runRegistryGet);
    addKey(get, options);
    addName(get, options)->required();
    addJson(get, options, "Print one JSON value, with the type");
}

/// Takes any number of words, in their order and as they are: as a list, CLI11 would take words in brackets
/// apart, and move those that look like options behind the others. So the option itself takes none of them,
/// and only makes CLI11 let the mark `--` pass.
void addData(CLI::App& set) {
    set.validate_positionals();
    set.prefix_command();
    set.add_option("DATA", "As below; behind -- if it begins with a -")
        ->check([](const std::string&) { return std::string("taken with the rest of the line"); })
        ->type_name("...");
}

/// The mark is among them, and a second one is a word.
std::vector<std::string> wordsOfData(const CLI::App& set) {
    std::vector<std::string> words = set.remaining();
    if (const auto mark = std::ranges::find(words, "--"); mark != words.end()) {
        words.erase(mark);
    }
    return words;
}

void addSet(CLI::App& group, Commands& commands) {
    const auto options = std::make_shared<RegistryOptions>();
    CLI::App* const set = group.add_subcommand("set", "Set a value; makes its key if there is none");
    addKey(*set, options);
    addName(*set, options)->required();
    set->add_option("TYPE", options->type, "sz, dword, qword, binary or multi_sz")->required()->type_name("");
    addData(*set);
    set->footer(setNotes);
    commands.push_back({set, [=] {
                            options->data = wordsOfData(*set);
                            runRegistrySet(*options);
                            return 0;
                        }});
}

void addCreate(const Declaration& declaration) {
    const auto options = std::make_shared<RegistryOptions>();
    addKey(declaration.add("create", "Make a key, if there is none, and those above it", options,
                           runRegistryCreate),
           options);
}

void addDelete(CLI::App& group, Commands& commands) {
    const auto options = std::make_shared<RegistryOptions>();
    CLI::App* const command =
        group.add_subcommand("delete", "Delete a value; without NAME the key, with all below it");
    addKey(*command, options);
    const CLI::Option* const name = addName(*command, options);
    commands.push_back({command, [options, name] {
                            options->hasName = name->count() != 0;
                            runRegistryDelete(*options);
                            return 0;
                        }});
}

void addWatch(const Declaration& declaration) {
    const auto options = std::make_shared<RegistryOptions>();
    CLI::App& watch = declaration.add(
        "watch", "Print a line for each change in a key and below it, until Ctrl-C; the key may come later",
        options, runRegistryWatch);
    addKey(watch, options);
    addJson(watch, options, "Print a JSON value on each line");
}

void addTransfer(const Declaration& declaration) {
    const auto options = std::make_shared<RegistryOptions>();
    const std::string description =
        std::string("Make the changes that .reg text asks for") + platform::registryWords().howItChanges;
    CLI::App& import = declaration.add("import", description.c_str(), options, runRegistryImport);
    import.add_option("FILE", options->file, ".reg text; - is standard input")->required()->type_name("");
    import.footer(transferNotes);
    CLI::App& exporting =
        declaration.add("export", "Print a key and all below it as .reg text", options, runRegistryExport);
    addKey(exporting, options);
    exporting.footer(transferNotes);
}

}  // namespace

void addRegistry(CLI::App& line, Commands& commands) {
    CLI::App* const group = line.add_subcommand("registry", "Look into the registry, and change it");
    group->require_subcommand(1);
    group->footer(std::string(keyNotes) + platform::registryWords().whereItIs + examples);
    const Declaration declaration{*group, commands};
    addList(declaration);
    addGet(declaration);
    addSet(*group, commands);
    addCreate(declaration);
    addDelete(*group, commands);
    addWatch(declaration);
    addTransfer(declaration);
}

}  // namespace korva::tool
