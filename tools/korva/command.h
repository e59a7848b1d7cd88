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

/// Adds a group of commands, or a single one, to the command line. Each group has such a function in this
/// namespace, whose name is `add` and the group's; the table of groups declares it.
using AddCommands = void(CLI::App& line, Commands& commands);

}  // namespace korva::tool
