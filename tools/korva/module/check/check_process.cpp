#include "korva/module/check/check_process.h"

#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <string_view>

#include "korva/errors.h"
#include "korva/interruption.h"
#include "korva/module/check/check_report.h"

namespace korva::tool {
namespace {

class Descriptor {
public:
    Descriptor(int opened, const char* what) : number(opened) {
        if (number < 0) {
            fail("cannot {}: {}", what, systemMessage(errno));
        }
    }
    ~Descriptor() { close(number); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    const int number;
};

std::set<pid_t> childrenOfThisProcess() {
    std::ifstream file("/proc/thread-self/children");
    std::set<pid_t> children;
    for (pid_t child = 0; file >> child;) {
        children.insert(child);
    }
    return children;
}

/// A descriptor that can be read when the process has ended. By its number: the C library's header of the
/// function is not for C++.
int openProcess(pid_t process) {
    return static_cast<int>(syscall(SYS_pidfd_open, process, 0));
}

constexpr off_t remarksCapacity = 1 << 16;

/// A file for what a module has to say before it crashes. It can't grow, whatever is written.
int openRemarks() {
    const int file = memfd_create("remarks", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    if (file >= 0 && ftruncate(file, remarksCapacity) == 0) {
        fcntl(file, F_ADD_SEALS, F_SEAL_GROW | F_SEAL_SHRINK);
    }
    return file;
}

/// The first line with words on it.
std::string firstRemark(int file) {
    std::array<char, 4096> bytes{};
    const ssize_t count = pread(file, bytes.data(), bytes.size(), 0);
    std::string_view text(bytes.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    text = text.substr(0, text.find('\0'));
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (line.find_first_not_of("= \t\r") != std::string_view::npos) {
            return asOneLine(line);
        }
        text.remove_prefix(std::min(text.size(), line.size() + 1));
    }
    return "";
}

void takeSignalsAsByDefault() {
    for (const int common : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
        signal(common, SIG_DFL);
    }
}

void replaceStreams(int remarks) {
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    dup2(nothing, STDIN_FILENO);
    dup2(nothing, STDOUT_FILENO);
    dup2(remarks, STDERR_FILENO);
}

void leaveNoCore() {
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
}

/// Ends this process with the tool, even if that is killed.
void endWithParent(pid_t parent) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) {
        _exit(0);
    }
}

Verdict verdictOf(const std::function<Verdict()>& check) {
    try {
        return check();
    } catch (const CheckFailed& failure) {
        return {Outcome::failed, failure.what()};
    } catch (const CheckSkipped& reason) {
        return {Outcome::skipped, reason.what()};
    } catch (const std::exception& error) {
        return {Outcome::failed, fmt::format("throws an exception{}: {}", whereText(), error.what())};
    } catch (...) {
        return {Outcome::failed, fmt::format("throws an exception{}", whereText())};
    }
}

[[noreturn]] void beCheck(const std::function<Verdict()>& check, CheckReport& report, int remarks,
                          pid_t parent) {
    setpgid(0, 0);
    endWithParent(parent);
    takeSignalsAsByDefault();
    leaveNoCore();
    replaceStreams(remarks);
    reportTo(report);
    const pid_t self = getpid();
    const Verdict verdict = verdictOf(check);
    // A module that forks makes copies of the check too, whose results nobody wants.
    if (getpid() == self) {
        report.leave(verdict.outcome, verdict.reason);
    }
    _exit(0);
}

/// Where the check was when its process ended: itself, or else another of its threads.
std::string placeOf(const CheckReport& report) {
    const char* const call = report.call;
    return whereText(report, call != nullptr ? call : report.otherCall.load());
}

Verdict crashVerdict(const CheckReport& report, int status, const std::string& remark) {
    const std::string end = remark.empty() ? "" : ": " + remark;
    if (WIFSIGNALED(status)) {
        const std::string at =
            report.hasCrashAddress ? fmt::format(" at {:#x}", report.crashAddress.load()) : "";
        return {Outcome::crashed, fmt::format("{}{}{}{}", strsignal(WTERMSIG(status)), at,
                                              whereText(report, report.crashCall), end)};
    }
    return {Outcome::crashed, fmt::format("the process ended with exit code {}{}{}", WEXITSTATUS(status),
                                          placeOf(report), end)};
}

Verdict limitVerdict(const CheckReport& report, int limitMs) {
    return {Outcome::failed,
            fmt::format("did not come back within {:g} s{}", limitMs / 1000.0, placeOf(report))};
}

}  // namespace

CheckProcesses::CheckProcesses() : others(childrenOfThisProcess()) {
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    // Where it was ignored, nobody learns how a child ended.
    signal(SIGCHLD, SIG_DFL);
}

CheckProcesses::~CheckProcesses() {
    prctl(PR_SET_CHILD_SUBREAPER, 0);
}

Verdict CheckProcesses::run(const std::function<Verdict()>& check, int limitMs) const {
    const SharedReport report;
    const Descriptor remarks(openRemarks(), "keep what a module says");
    const pid_t self = getpid();
    const pid_t child = fork();
    if (child < 0) {
        fail("cannot start a process: {}", systemMessage(errno));
    }
    if (child == 0) {
        beCheck(check, *report, remarks.number, self);
    }
    setpgid(child, child);  // Both sides do it, so that it is done whoever comes first.
    bool hasEnded = false;
    try {
        const Descriptor process(openProcess(child), "watch a process");
        hasEnded = waitUntilReady(process.number, Direction::read, limitMs);
    } catch (...) {
        endAll(child);
        throw;
    }
    const int status = endAll(child);
    if (report->isLeft) {
        return {report->outcome, asOneLine(report->reason)};
    }
    return hasEnded ? crashVerdict(*report, status, firstRemark(remarks.number))
                    : limitVerdict(*report, limitMs);
}

int CheckProcesses::endAll(pid_t check) const {
    int status = 0;
    kill(-check, SIGKILL);
    kill(check, SIGKILL);  // By itself: a module may have taken it to another group.
    waitpid(check, &status, 0);
    while (true) {
        std::set<pid_t> left = childrenOfThisProcess();
        for (const pid_t other : others) {
            left.erase(other);
        }
        if (left.empty()) {
            return status;
        }
        // Those of the group, those that left it, and then those that these started.
        for (const pid_t child : left) {
            kill(child, SIGKILL);
            waitpid(child, nullptr, 0);
        }
    }
}

}  // namespace korva::tool
