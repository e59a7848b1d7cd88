#include "platform/host_event.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <limits>

#include "platform/published/results.h"

namespace korva::platform {
namespace {

/// ERROR_TOO_MANY_OPEN_FILES
constexpr auto tooManyOpenFiles = static_cast<HRESULT>(0x80070004U);

bool isDescriptor(std::intptr_t number) noexcept {
    return number > 0 && number <= std::numeric_limits<int>::max();
}

}  // namespace

HRESULT HostEvent::duplicate(HANDLE event) noexcept {
    release();
    const auto number = reinterpret_cast<std::intptr_t>(event);
    if (!isDescriptor(number)) {
        return published::invalidHandle;
    }
    // Not 0, which would be none, nor another one of a host's standard streams that it has closed.
    const int descriptor = fcntl(static_cast<int>(number), F_DUPFD_CLOEXEC, 3);
    if (descriptor < 0) {
        return errno == EBADF ? published::invalidHandle : tooManyOpenFiles;
    }
    own = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(descriptor));
    return published::ok;
}

void HostEvent::release() noexcept {
    if (own != nullptr) {
        close(static_cast<int>(reinterpret_cast<std::intptr_t>(own)));
        own = nullptr;
    }
}

}  // namespace korva::platform
