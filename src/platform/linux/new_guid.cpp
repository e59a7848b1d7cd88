#include "platform/new_guid.h"

#include <sys/random.h>

#include <cerrno>

namespace korva::platform {
namespace {

/// So few bytes come all at once, but the wait for the first ones after the system's start may be cut short
/// by a signal to the thread.
bool fillAtRandom(GUID& guid) noexcept {
    ssize_t count = -1;
    do {
        count = getrandom(&guid, sizeof(guid), 0);
    } while (count < 0 && errno == EINTR);
    return count == static_cast<ssize_t>(sizeof(guid));
}

}  // namespace

GUID newGuid() noexcept {
    GUID guid{};
    if (!fillAtRandom(guid)) {
        return {};
    }
    guid.Data3 = static_cast<std::uint16_t>((guid.Data3 & 0x0FFF) | 0x4000);
    guid.Data4[0] = static_cast<std::uint8_t>((guid.Data4[0] & 0x3F) | 0x80);
    return guid;
}

}  // namespace korva::platform
