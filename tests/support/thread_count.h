// How many threads this process has.
#pragma once

#include <cstddef>

namespace korva::test {

/// As the operating system counts them; a thread that has just ended may be among them for a moment.  [any]
[[nodiscard]] std::size_t threadCount();

}  // namespace korva::test
