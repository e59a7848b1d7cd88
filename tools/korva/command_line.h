// The command line, from the words to what they ask for.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "korva/command.h"

namespace korva::tool {

/// Runs what the arguments, of which the first is the program, ask for, of the commands of all groups, and
/// gives its exit code. Throws `ToolError`, also for a line that can't be understood, or `Interrupted`.
int runCommandLine(const std::vector<std::string>& arguments, std::span<AddCommands* const> commandGroups);

}  // namespace korva::tool
