// The command line, from the words to what they ask for.
#pragma once

namespace korva::tool {

/// Runs what the arguments ask for, and gives its exit code. Throws `ToolError`, also for a line that can't
/// be understood, or `Interrupted`.
int runCommandLine(int argumentCount, const char* const* arguments);

}  // namespace korva::tool
