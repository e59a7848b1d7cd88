// What the tool can be asked to do. Each group of commands declares itself in a source of its own.
#pragma once

#include <functional>
#include <vector>

namespace CLI {
class App;
}

namespace korva::tool {

/// One command: how it reads on the command line, and what it does then.
struct Command {
    const CLI::App* declaration;  ///< The command line's own.
    /// Gives the exit code: 0 done, 1 ran and found a fault. Throws `ToolError` or `Interrupted`.
    std::function<int()> run;
};
using Commands = std::vector<Command>;

/// Each adds its command, or its group of them, to the command line.
void addCatalogue(CLI::App& line, Commands& commands);
void addEndpoint(CLI::App& line, Commands& commands);
void addModule(CLI::App& line, Commands& commands);
void addPreset(CLI::App& line, Commands& commands);
void addProcess(CLI::App& line, Commands& commands);
void addRegistration(CLI::App& line, Commands& commands);
void addRegistry(CLI::App& line, Commands& commands);

}  // namespace korva::tool
