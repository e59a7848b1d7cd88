#include "platform/system_version.h"

#include <windows.h>

namespace korva::platform {
namespace {

/// The calls of the documented interface tell a program the version that it says it was made for; this one
/// tells the system's.
SystemVersion readVersion() noexcept {
    using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    const HMODULE library = GetModuleHandleW(L"ntdll.dll");
    const FARPROC found = library == nullptr ? nullptr : GetProcAddress(library, "RtlGetVersion");
    const auto getVersion = reinterpret_cast<GetVersion>(reinterpret_cast<void*>(found));
    OSVERSIONINFOW version{};
    version.dwOSVersionInfoSize = sizeof(version);
    if (getVersion == nullptr || getVersion(&version) != 0) {
        return {};
    }
    return {version.dwMajorVersion, version.dwBuildNumber};
}

}  // namespace

const SystemVersion& systemVersion() noexcept {
    static const SystemVersion version = readVersion();
    return version;
}

}  // namespace korva::platform
