#include "tests/rtsafe/watched_thread.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <stdexcept>
#include <thread>

#include "korva/module/realtime_watch/violations.h"

namespace korva::test {
namespace {

enum class Outcome : int { none, clean, violation, systemCall, noFilter };

/// What the child leaves for its parent, in memory that both have.
struct SharedReport {
    volatile Outcome outcome;
    volatile int systemCall;
    volatile int progress;
    volatile char name[64];
};

SharedReport* report = nullptr;

[[noreturn]] void endWith(Outcome outcome) noexcept {
    report->outcome = outcome;
    _exit(0);
}

void leaveName(const char* name) noexcept {
    for (std::size_t i = 0; i + 1 < sizeof(report->name) && name[i] != '\0'; ++i) {
        report->name[i] = name[i];
    }
}

void endWithViolation(const tool::Violation& violation) noexcept {
    if (violation.function == nullptr) {
        report->systemCall = violation.systemCall;
        endWith(Outcome::systemCall);
    }
    leaveName(violation.function);
    endWith(Outcome::violation);
}

void watch(const std::function<void()>& call) noexcept {
    if (!tool::watchThisThread(endWithViolation)) {
        endWith(Outcome::noFilter);
    }
    call();
    // Not by returning: the thread's end would already be a system call.
    endWith(Outcome::clean);
}

std::string describe(const SharedReport& shared) {
    switch (shared.outcome) {
        case Outcome::none:
            return "the child ended without a report";
        case Outcome::clean:
            return "";
        case Outcome::noFilter:
            return "the system has no filter for system calls";
        case Outcome::systemCall:
            return "system call " + std::to_string(shared.systemCall);
        case Outcome::violation:
            break;
    }
    std::string name;
    for (std::size_t i = 0; i < sizeof(shared.name) && shared.name[i] != '\0'; ++i) {
        name += shared.name[i];
    }
    return name;
}

}  // namespace

void noteProgress(int number) noexcept {
    report->progress = number;
}

WatchedResult runWatched(const std::function<void()>& call) {
    void* const shared =
        mmap(nullptr, sizeof(SharedReport), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) {
        throw std::runtime_error("no shared memory");
    }
    report = static_cast<SharedReport*>(shared);
    const pid_t child = fork();
    if (child == 0) {
        std::thread([&] { watch(call); }).join();
        _exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const WatchedResult result{.clean = report->outcome == Outcome::clean,
                               .violation = describe(*report),
                               .progress = report->progress};
    munmap(shared, sizeof(SharedReport));
    return result;
}

}  // namespace korva::test
