#include "korva/module/system_calls.h"

#include <sys/syscall.h>

namespace korva::tool {

const char* systemCallName(int number) noexcept {
    switch (number) {
#define KORVA_SYSTEM_CALL(name) \
    case SYS_##name:            \
        return "the system call " #name
        KORVA_SYSTEM_CALL(read);
        KORVA_SYSTEM_CALL(write);
        KORVA_SYSTEM_CALL(writev);
        KORVA_SYSTEM_CALL(openat);
        KORVA_SYSTEM_CALL(close);
        KORVA_SYSTEM_CALL(ioctl);
        KORVA_SYSTEM_CALL(mmap);
        KORVA_SYSTEM_CALL(munmap);
        KORVA_SYSTEM_CALL(mprotect);
        KORVA_SYSTEM_CALL(madvise);
        KORVA_SYSTEM_CALL(brk);
        KORVA_SYSTEM_CALL(futex);
        KORVA_SYSTEM_CALL(sched_yield);
        KORVA_SYSTEM_CALL(nanosleep);
        KORVA_SYSTEM_CALL(clock_nanosleep);
        KORVA_SYSTEM_CALL(clock_gettime);
        KORVA_SYSTEM_CALL(gettimeofday);
        KORVA_SYSTEM_CALL(getpid);
        KORVA_SYSTEM_CALL(gettid);
        KORVA_SYSTEM_CALL(getrandom);
        KORVA_SYSTEM_CALL(kill);
        KORVA_SYSTEM_CALL(tgkill);
        KORVA_SYSTEM_CALL(clone);
        KORVA_SYSTEM_CALL(clone3);
        KORVA_SYSTEM_CALL(poll);
        KORVA_SYSTEM_CALL(select);
        KORVA_SYSTEM_CALL(socket);
        KORVA_SYSTEM_CALL(sendto);
        KORVA_SYSTEM_CALL(rt_sigprocmask);
#undef KORVA_SYSTEM_CALL
        default:
            return "the system";
    }
}

}  // namespace korva::tool
