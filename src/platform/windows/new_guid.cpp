#include "platform/new_guid.h"

#include <windows.h>

#include <objbase.h>

namespace korva::platform {

GUID newGuid() noexcept {
    GUID guid{};
    return SUCCEEDED(CoCreateGuid(&guid)) ? guid : GUID{};
}

}  // namespace korva::platform
