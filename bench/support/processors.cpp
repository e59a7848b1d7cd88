#include "bench/support/processors.h"

#include <sched.h>
#include <unistd.h>

#include <stdexcept>

namespace korva::bench {

namespace {

// The nth processor that the process may use. The main thread's choice stands for the process; it stays as it
// is, and threads that are bound are others.
std::size_t processor(std::size_t nth) {
    cpu_set_t allowed;
    sched_getaffinity(getpid(), sizeof(allowed), &allowed);
    for (std::size_t candidate = 0; candidate < CPU_SETSIZE; ++candidate) {
        if (CPU_ISSET(candidate, &allowed) && nth-- == 0) {
            return candidate;
        }
    }
    throw std::runtime_error("the process has too few processors");
}

void bind(pid_t thread, std::size_t nth) {
    cpu_set_t chosen;
    CPU_ZERO(&chosen);
    CPU_SET(processor(nth), &chosen);
    if (sched_setaffinity(thread, sizeof(chosen), &chosen) != 0) {
        throw std::runtime_error("a thread can't be bound to a processor");
    }
}

}  // namespace

void bindCaller(pid_t thread) {
    bind(thread, 0);
}

void bindTarget(pid_t thread, Place place) {
    bind(thread, place == Place::apart ? 1 : 0);
}

}  // namespace korva::bench
