#include "bench/support/futex_word.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

namespace korva::bench {

// Neither call is told that it is for one process only.
void FutexWord::raise() noexcept {
    word.fetch_add(1, std::memory_order_release);
    syscall(SYS_futex, &word, FUTEX_WAKE, 1, nullptr, nullptr, 0);
}

bool FutexWord::waitWhile(std::uint32_t seen, std::int64_t limitSeconds) const noexcept {
    const timespec limit = {.tv_sec = limitSeconds, .tv_nsec = 0};
    do {
        if (syscall(SYS_futex, &word, FUTEX_WAIT, seen, &limit, nullptr, 0) != 0 && errno == ETIMEDOUT) {
            return false;
        }
    } while (count() == seen);
    return true;
}

}  // namespace korva::bench
