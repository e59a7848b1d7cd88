#include "platform/processor_count.h"

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <array>

namespace korva::platform {

unsigned processorCount() noexcept {
    // Room for 8192 processors, the most that a kernel is built for; it refuses a set with less room than it
    // was built for itself.
    std::array<cpu_set_t, 8> allowed{};
    // The choice is kept for each thread. That of the main one is inherited from who started the process, and
    // is what tools show and change for a process.
    if (sched_getaffinity(getpid(), sizeof(allowed), allowed.data()) != 0) {
        return 1;
    }
    return static_cast<unsigned>(std::max(1, CPU_COUNT_S(sizeof(allowed), allowed.data())));
}

}  // namespace korva::platform
