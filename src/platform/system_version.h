// Which version of the system this is.
#pragma once

#include <cstdint>

namespace korva::platform {

/// Windows' own numbers: 10 and 22000 for instance. All zero where the system is another one, or doesn't
/// tell.
struct SystemVersion {
    std::uint32_t major = 0;
    std::uint32_t build = 0;

    friend bool operator==(const SystemVersion& a, const SystemVersion& b) noexcept = default;
};

/// Read once, when it is first asked for.  [any]
[[nodiscard]] const SystemVersion& systemVersion() noexcept;

}  // namespace korva::platform
