#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

#include "korva/module/realtime_watch/violations.h"

namespace korva::tool {
namespace {

void onTrap(int, siginfo_t* info, void*) {
    forbidSystemCallOnWatchedThread(info->si_syscall);
}

/// Whether the monotonic clock is read without entering the kernel. With any other source the C library
/// must make a system call for it, which is then no fault of its caller.
bool clockNeedsNoSystemCall() {
    std::ifstream file("/sys/devices/system/clocksource/clocksource0/current_clocksource");
    std::string source;
    file >> source;
    return source == "tsc" || source == "kvm-clock";
}

constexpr std::uint32_t noClock = 0xFFFFFFFF;

constexpr sock_filter load(std::size_t offset) {
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<__u32>(offset));
}
constexpr sock_filter give(std::uint32_t verdict) {
    return BPF_STMT(BPF_RET | BPF_K, verdict);
}
/// Goes on if the loaded word is `value`, else skips `count` steps.
constexpr sock_filter unless(std::uint32_t value, std::uint8_t count) {
    return BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, count);
}

}  // namespace

bool trapSystemCallsOfThisThread() noexcept {
    struct sigaction action = {};
    action.sa_sigaction = onTrap;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSYS, &action, nullptr);

    const std::uint32_t allowedClock = clockNeedsNoSystemCall() ? noClock : CLOCK_MONOTONIC;
    std::array<sock_filter, 10> program = {load(offsetof(seccomp_data, nr)),
                                           unless(SYS_exit_group, 1),
                                           give(SECCOMP_RET_ALLOW),
                                           unless(SYS_rt_sigreturn, 1),
                                           give(SECCOMP_RET_ALLOW),
                                           unless(SYS_clock_gettime, 3),
                                           load(offsetof(seccomp_data, args)),
                                           unless(allowedClock, 1),
                                           give(SECCOMP_RET_ALLOW),
                                           give(SECCOMP_RET_TRAP)};
    const sock_fprog filter = {.len = static_cast<unsigned short>(program.size()), .filter = program.data()};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

}  // namespace korva::tool
