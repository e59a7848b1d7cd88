#include "tests/support/thread_count.h"

#include <fstream>
#include <stdexcept>
#include <string>

namespace korva::test {

std::size_t threadCount() {
    std::ifstream status("/proc/self/status");
    const std::string label = "Threads:";
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(label)) {
            return std::stoul(line.substr(label.size()));
        }
    }
    throw std::runtime_error("the system doesn't tell the number of threads");
}

}  // namespace korva::test
