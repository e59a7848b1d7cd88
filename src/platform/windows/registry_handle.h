// An open key of Windows' registry, as the registry's source holds it.
#pragma once

#include <windef.h>
#include <winreg.h>

#include <cstdint>

namespace korva::platform {

/// Whether `key` is one of the numbers that stand for a root everywhere and always. To close one would drop
/// what the process keeps for it, also for code that isn't ours.
[[nodiscard]] inline bool isPredefined(HKEY key) noexcept {
    const auto number = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(key));
    return (number >= 0x80000000U && number <= 0x80000007U) || number == 0x80000050U || number == 0x80000060U;
}

}  // namespace korva::platform
