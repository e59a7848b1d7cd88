#include "platform/process_clock.h"

#include <unistd.h>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

namespace korva::platform {
namespace {

std::uint64_t bootClockMs() {
    timespec now{};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * 1000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000000;
}

/// The kernel gives the start as ticks after boot, in the 22nd field of this process's status line. The
/// second field is the program's name in brackets, which may hold spaces and brackets of its own.
std::uint64_t startOnBootClockMs() {
    std::ifstream status("/proc/self/stat");
    std::string line;
    std::getline(status, line);
    std::istringstream fields(line.substr(line.rfind(')') + 1));
    std::string skipped;
    for (int field = 3; field < 22; ++field) {
        fields >> skipped;
    }
    std::uint64_t ticks = 0;
    if (!(fields >> ticks)) {
        return bootClockMs();  // no status file: the clock counts from its first use
    }
    return ticks * 1000 / static_cast<std::uint64_t>(sysconf(_SC_CLK_TCK));
}

}  // namespace

std::uint64_t processClockMs() noexcept {
    static const std::uint64_t start = startOnBootClockMs();
    return bootClockMs() - start;
}

}  // namespace korva::platform
