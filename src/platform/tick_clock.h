// A coarse clock that all processes of the machine share.
#pragma once

#include <cstdint>

namespace korva::platform {

/// Milliseconds since the system began, in 32 bits: it begins anew after 49.7 days. What Windows calls
/// `timeGetTime`.  [any]
[[nodiscard]] std::uint32_t tickClockMs() noexcept;

}  // namespace korva::platform
