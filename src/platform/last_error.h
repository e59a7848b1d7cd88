// The calling thread's last error.
#pragma once

#include <cstdint>

namespace korva::platform {

/// A number of the system's, 0 for none: what `setLastError`, or a call of the system's on Windows, left for
/// this thread.  [any]
[[nodiscard]] std::uint32_t lastError() noexcept;
void setLastError(std::uint32_t error) noexcept;

}  // namespace korva::platform
