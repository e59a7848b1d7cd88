#include "platform/last_error.h"

#include <windows.h>

namespace korva::platform {

std::uint32_t lastError() noexcept {
    return GetLastError();
}

void setLastError(std::uint32_t error) noexcept {
    SetLastError(error);
}

}  // namespace korva::platform
