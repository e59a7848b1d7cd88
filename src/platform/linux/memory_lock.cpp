#include "platform/memory_lock.h"

#include <linux/capability.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>

namespace korva::platform {
namespace {

/// Whether the kernel asks this process for no limit.
bool mayLockAll() noexcept {
    __user_cap_header_struct header{.version = _LINUX_CAPABILITY_VERSION_3, .pid = 0};
    std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> rights{};
    return syscall(SYS_capget, &header, rights.data()) == 0 &&
           (rights[CAP_TO_INDEX(CAP_IPC_LOCK)].effective & CAP_TO_MASK(CAP_IPC_LOCK)) != 0;
}

}  // namespace

bool lockMemory(const void* start, std::size_t size) noexcept {
    // The kernel rounds the range out to whole pages.
    return mlock(start, size) == 0;
}

std::optional<std::size_t> lockableMemory() noexcept {
    rlimit limit{};
    if (mayLockAll() || getrlimit(RLIMIT_MEMLOCK, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(limit.rlim_cur);
}

}  // namespace korva::platform
