// The groups of commands that this build of the tool has.
#pragma once

#include <span>

#include "korva/command.h"

namespace korva::tool {

/// In the order in which the help shows them. The build makes it of the groups that it found all libraries
/// for, so it is there once `main` runs.
extern const std::span<AddCommands* const> commandTable;

}  // namespace korva::tool
