#include "korva/module/check/system_calls.h"

#include <sys/syscall.h>

#include <algorithm>
#include <array>

namespace korva::tool {
namespace {

struct SystemCall {
    int number;
    const char* name;
};
constexpr std::array systemCalls = {
    SystemCall{SYS_read, "the system call read"},
    SystemCall{SYS_write, "the system call write"},
    SystemCall{SYS_writev, "the system call writev"},
    SystemCall{SYS_openat, "the system call openat"},
    SystemCall{SYS_close, "the system call close"},
    SystemCall{SYS_ioctl, "the system call ioctl"},
    SystemCall{SYS_mmap, "the system call mmap"},
    SystemCall{SYS_munmap, "the system call munmap"},
    SystemCall{SYS_mprotect, "the system call mprotect"},
    SystemCall{SYS_madvise, "the system call madvise"},
    SystemCall{SYS_brk, "the system call brk"},
    SystemCall{SYS_futex, "the system call futex"},
    SystemCall{SYS_sched_yield, "the system call sched_yield"},
    SystemCall{SYS_nanosleep, "the system call nanosleep"},
    SystemCall{SYS_clock_nanosleep, "the system call clock_nanosleep"},
    SystemCall{SYS_clock_gettime, "the system call clock_gettime"},
    SystemCall{SYS_gettimeofday, "the system call gettimeofday"},
    SystemCall{SYS_getpid, "the system call getpid"},
    SystemCall{SYS_gettid, "the system call gettid"},
    SystemCall{SYS_getrandom, "the system call getrandom"},
    SystemCall{SYS_kill, "the system call kill"},
    SystemCall{SYS_tgkill, "the system call tgkill"},
    SystemCall{SYS_clone, "the system call clone"},
    SystemCall{SYS_clone3, "the system call clone3"},
    SystemCall{SYS_poll, "the system call poll"},
    SystemCall{SYS_select, "the system call select"},
    SystemCall{SYS_socket, "the system call socket"},
    SystemCall{SYS_sendto, "the system call sendto"},
    SystemCall{SYS_rt_sigprocmask, "the system call rt_sigprocmask"},
};

}  // namespace

const char* systemCallName(int number) noexcept {
    const auto* const found = std::ranges::find(systemCalls, number, &SystemCall::number);
    return found == systemCalls.end() ? "the system" : found->name;
}

}  // namespace korva::tool
