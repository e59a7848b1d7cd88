// Which version of the loops over samples processes.
#pragma once

#include <string>

namespace korva::tool {

/// The name of the one that the object chooses: it is of the same build as the tool, and looks at the same
/// processor and the same environment. Throws `ToolError` if that forces a version which this processor can't
/// run: the choice itself passes over it, but whoever forces one wants that one.
[[nodiscard]] std::string chosenKernels();

}  // namespace korva::tool
