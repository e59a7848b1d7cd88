// Names of system calls.
#pragma once

namespace korva::tool {

/// "the system call futex"; without the name for one that modules hardly ever make.  [any, rt]
[[nodiscard]] const char* systemCallName(int number) noexcept;

}  // namespace korva::tool
