#include "tests/modules/recorder/system.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

namespace korva::recorder {

std::string environmentText(const char* name) {
    const char* const text = std::getenv(name);
    return text == nullptr ? std::string() : std::string(text);
}

std::string ownName() {
    Dl_info own{};
    dladdr(reinterpret_cast<const void*>(&ownName), &own);
    return std::filesystem::path(own.dli_fname).stem().string();
}

std::uint64_t processNumber() {
    return static_cast<std::uint64_t>(getpid());
}

std::uint64_t threadNumber() {
    return static_cast<std::uint64_t>(gettid());
}

void append(const std::string& file, const std::string& text) {
    // The system moves to the end and writes in one step.
    const int end = open(file.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
    if (end >= 0) {
        [[maybe_unused]] const auto written = write(end, text.data(), text.size());
        close(end);
    }
}

}  // namespace korva::recorder
