#include "bench/support/thread_state.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

namespace korva::bench {

namespace {

using Clock = std::chrono::steady_clock;

// Busy rather than asleep: the caller's processor is then in the same state before each measured call, and
// the scheduler has no reason to put both threads on one.
void stayBusyFor(std::chrono::microseconds time) {
    const Clock::time_point end = Clock::now() + time;
    while (Clock::now() < end) {
    }
}

}  // namespace

ThreadState::ThreadState(pid_t thread)
    : file(open(("/proc/self/task/" + std::to_string(thread) + "/stat").c_str(), O_RDONLY | O_CLOEXEC)) {
    if (file < 0) {
        throw std::runtime_error("the kernel doesn't know the thread");
    }
}

ThreadState::~ThreadState() {
    close(file);
}

void ThreadState::waitUntilAsleep() const {
    const Clock::time_point limit = Clock::now() + std::chrono::seconds(20);
    do {
        if (Clock::now() > limit) {
            throw std::runtime_error("the thread doesn't fall asleep");
        }
        stayBusyFor(std::chrono::microseconds(200));
    } while (!isAsleep());
}

// "id (name) state ...", where the name may contain anything.
bool ThreadState::isAsleep() const {
    std::array<char, 512> text{};
    const ssize_t length = pread(file, text.data(), text.size(), 0);
    if (length <= 0) {
        throw std::runtime_error("the thread's state can't be read");
    }
    const std::string_view line(text.data(), static_cast<std::size_t>(length));
    const std::size_t nameEnd = line.rfind(')');
    return nameEnd != std::string_view::npos && line.substr(nameEnd, 4) == ") S ";
}

OtherThreads::OtherThreads() {
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        const pid_t thread = std::stoi(entry.path().filename().string());
        if (thread != gettid()) {
            states.emplace_back(thread);
        }
    }
}

void OtherThreads::waitUntilAsleep() const {
    for (const ThreadState& state : states) {
        state.waitUntilAsleep();
    }
}

}  // namespace korva::bench
