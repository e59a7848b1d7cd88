#include "platform/host_event.h"

#include <windows.h>

#include "platform/published/results.h"
#include "platform/registry_values.h"

namespace korva::platform {

HRESULT HostEvent::duplicate(HANDLE event) noexcept {
    release();
    const HANDLE self = GetCurrentProcess();
    if (DuplicateHandle(self, event, self, &own, EVENT_MODIFY_STATE, FALSE, 0) == 0) {
        own = nullptr;
        return hresultOf(static_cast<RegistryResult>(GetLastError()));
    }
    return published::ok;
}

void HostEvent::release() noexcept {
    if (own != nullptr) {
        CloseHandle(own);
        own = nullptr;
    }
}

}  // namespace korva::platform
