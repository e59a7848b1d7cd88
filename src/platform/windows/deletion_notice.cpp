#include "platform/deletion_notice.h"

#include <windows.h>

namespace korva::platform {

// Windows signals; Wine, which says who it is by this export, leaves the watch of a deleted key silent.
bool tellsOfKeyDeletion() noexcept {
    static const bool isWine = GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return !isWine;
}

}  // namespace korva::platform
