// Errors of the system in the words of the standard library.
#pragma once

#include <cstdint>
#include <system_error>

namespace korva::platform {

/// The code for a number of the system's: a generic one where there is one that means the same.
[[nodiscard]] std::error_code systemError(std::uint32_t number);

/// The same for the calling thread's last error.
[[nodiscard]] std::error_code lastSystemError();

}  // namespace korva::platform
