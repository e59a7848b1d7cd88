#include "platform/thread_locale.h"

#include <windows.h>

namespace korva::platform {

SystemLocale::SystemLocale() noexcept : former(GetThreadLocale()) {
    SetThreadLocale(LOCALE_SYSTEM_DEFAULT);
}

SystemLocale::~SystemLocale() {
    SetThreadLocale(former);
}

}  // namespace korva::platform
