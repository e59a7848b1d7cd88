#include "platform/named_mutex.h"

#include <windows.h>

#include "platform/windows/object_sharing.h"

namespace korva::platform {
namespace {

SECURITY_ATTRIBUTES* sharing() noexcept {
    // Everyone may wait for it: SYNCHRONIZE. The other number is what the rights to a key of the registry
    // are.
    static ObjectSharing everyoneMayWait("D:(A;;0x100000;;;WD)(A;;0xF003F;;;BA)");
    return everyoneMayWait.attributes();
}

}  // namespace

/// The system's mutex lives as long as a handle of it is open, also when the thread that owns it has ended.
/// It isn't released: that is for its thread only, and who waits for it learns as much from its being left.
struct NamedMutex::Held {
    explicit Held(HANDLE mutex) noexcept : handle(mutex) {}
    ~Held() { CloseHandle(handle); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

    HANDLE const handle;
};

NamedMutex::NamedMutex() noexcept = default;
NamedMutex::NamedMutex(std::unique_ptr<const Held> mutex) noexcept : held(std::move(mutex)) {}
NamedMutex::NamedMutex(NamedMutex&& other) noexcept = default;
NamedMutex& NamedMutex::operator=(NamedMutex&& other) noexcept = default;
NamedMutex::~NamedMutex() = default;

NamedMutex NamedMutex::create(const std::string& name) noexcept {
    SECURITY_ATTRIBUTES* const attributes = sharing();
    if (!isMutexName(name) || attributes == nullptr) {
        return {};
    }
    HANDLE const handle = CreateMutexA(attributes, TRUE, name.c_str());
    if (handle == nullptr) {
        return {};
    }
    try {
        return NamedMutex(std::make_unique<const Held>(handle));
    } catch (...) {
        CloseHandle(handle);
        return {};  // no memory
    }
}

// While one asks it keeps the mutex itself, so that another one who asks just then may still see one that has
// gone.
bool isMutexHeld(const std::string& name) noexcept {
    if (!isMutexName(name)) {
        return false;
    }
    HANDLE const handle = OpenMutexA(SYNCHRONIZE, FALSE, name.c_str());
    if (handle != nullptr) {
        CloseHandle(handle);
        return true;
    }
    const DWORD error = GetLastError();
    // The second is an object of another kind.
    return error != ERROR_FILE_NOT_FOUND && error != ERROR_INVALID_HANDLE && error != ERROR_PATH_NOT_FOUND;
}

// The system leaves nothing of a process that has ended.
void removeAbandonedMutex(const std::string&) noexcept {}

}  // namespace korva::platform
