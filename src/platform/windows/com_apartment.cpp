#include "platform/com_apartment.h"

#include <windows.h>

#include <objbase.h>

namespace korva::platform {

// A thread that is a member already gets S_FALSE, which counts and has to be left too. One that is in an
// apartment of its own is refused, and then leaving would close that apartment.
ComApartment::ComApartment() noexcept : isMember(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}

ComApartment::~ComApartment() {
    if (isMember) {
        CoUninitialize();
    }
}

}  // namespace korva::platform
