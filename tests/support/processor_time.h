// What this process has computed so far.
#pragma once

#include <cstdint>

namespace korva::test {

/// Processor time of all threads of this process, in milliseconds.  [any]
[[nodiscard]] std::int64_t processorTimeMs();

}  // namespace korva::test
