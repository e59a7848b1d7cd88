#include "korva/module/check/check_report.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <exception>
#include <mutex>
#include <new>

#include "korva/errors.h"
#include "platform/mutex.h"

namespace korva::tool {
namespace {

CheckReport* current = nullptr;
thread_local const char* callOfThread = nullptr;
thread_local bool isCheck = false;  ///< Not one of the threads that a check starts.

struct ForbiddenMemory {
    std::uintptr_t begin = 0;
    std::uintptr_t end = 0;
    std::array<char, 96> what{};
};
std::array<ForbiddenMemory, 512> forbidden;  ///< A crash looks here without the lock.
platform::Mutex forbiddenMutex;

void copyText(std::string_view text, char* to, std::size_t capacity) noexcept {
    const std::size_t length = std::min(text.size(), capacity - 1);
    std::ranges::copy(text.substr(0, length), to);
    to[length] = '\0';
}

/// Text put together where nothing may be allocated.
class FixedText {
public:
    FixedText& add(const char* text) noexcept {
        for (; text != nullptr && *text != '\0' && length < bytes.size(); ++text) {
            bytes[length++] = *text;
        }
        return *this;
    }
    [[nodiscard]] std::string_view view() const noexcept { return {bytes.data(), length}; }

private:
    std::array<char, 512> bytes;
    std::size_t length = 0;
};

FixedText& addWhere(FixedText& text, const char* call, const char* situation) noexcept {
    if (call != nullptr) {
        text.add(" in ").add(call);
    }
    if (*situation != '\0') {
        text.add(" (").add(situation).add(")");
    }
    return text;
}

const ForbiddenMemory* forbiddenAt(std::uintptr_t address) noexcept {
    const auto found = std::ranges::find_if(forbidden, [address](const ForbiddenMemory& memory) {
        return memory.begin <= address && address < memory.end;
    });
    return found == forbidden.end() ? nullptr : &*found;
}

extern "C" void noteCrash(int signalNumber, siginfo_t* info, void*) {
    const auto address = reinterpret_cast<std::uintptr_t>(info->si_addr);
    const bool isAccess = signalNumber == SIGSEGV || signalNumber == SIGBUS;
    if (const ForbiddenMemory* const memory = isAccess ? forbiddenAt(address) : nullptr) {
        FixedText text;
        text.add("touches ").add(memory->what.data());
        endCheck(Outcome::failed, addWhere(text, callOfThread, current->situation).view());
    }
    // The check's other threads are in a call, or what they do is simple.
    const bool isModules = callOfThread == nullptr && !isCheck;
    current->crashCall = isModules ? "a thread of its own" : callOfThread;
    current->crashAddress = address;
    current->hasCrashAddress = isAccess;
    // To return is to crash again, and this time for good: the handler serves once.
}

void watchForCrashes() {
    struct sigaction action {};
    action.sa_sigaction = noteCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | static_cast<int>(SA_RESETHAND);
    sigemptyset(&action.sa_mask);
    for (const int signalNumber : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) {
        sigaction(signalNumber, &action, nullptr);
    }
}

/// A stack of its own for the handler, which else couldn't tell of a stack that has overflowed.
void giveHandlerAStack() {
    static std::array<std::byte, 64 * 1024> memory;
    stack_t known{};
    if (sigaltstack(nullptr, &known) == 0 && (known.ss_flags & SS_DISABLE) != 0) {
        const stack_t own = {.ss_sp = memory.data(), .ss_flags = 0, .ss_size = memory.size()};
        sigaltstack(&own, nullptr);
    }
}

void noteCall(const char* name) noexcept {
    callOfThread = name;
    (isCheck ? current->call : current->otherCall).store(name, std::memory_order_relaxed);
}

}  // namespace

void CheckReport::leave(Outcome verdict, std::string_view why) noexcept {
    if (isTaken.exchange(true)) {
        return;
    }
    outcome = verdict;
    copyText(why, reason, sizeof(reason));
    isLeft = true;
}

SharedReport::SharedReport() {
    void* const memory =
        mmap(nullptr, sizeof(CheckReport), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::bad_alloc();
    }
    report = new (memory) CheckReport{};
}

SharedReport::~SharedReport() {
    munmap(report, sizeof(CheckReport));
}

void reportTo(CheckReport& report) {
    current = &report;
    isCheck = true;
    giveHandlerAStack();
    watchForCrashes();
}

void noteSituation(std::string_view situation) noexcept {
    copyText(situation, current->situation, sizeof(current->situation));
}

NotedCall::NotedCall(const char* name) noexcept {
    noteCall(name);
}

NotedCall::~NotedCall() {
    if (std::uncaught_exceptions() != 0) {
        return;  // Whoever catches it says where it came from.
    }
    noteCall(nullptr);
}

void endCheck(Outcome outcome, std::string_view reason) noexcept {
    current->leave(outcome, reason);
    _exit(0);
}

void failAtCall(const char* function) noexcept {
    FixedText text;
    text.add("calls ").add(function);
    endCheck(Outcome::failed, addWhere(text, callOfThread, current->situation).view());
}

std::string whereText() {
    return whereText(*current, callOfThread);
}

std::string whereText(const CheckReport& report, const char* call) {
    FixedText text;
    return std::string(addWhere(text, call, report.situation).view());
}

void forbidMemory(const void* begin, std::size_t bytes, std::string_view what) {
    const std::lock_guard lock(forbiddenMutex);
    const auto free =
        std::ranges::find_if(forbidden, [](const ForbiddenMemory& memory) { return memory.begin == 0; });
    if (free != forbidden.end()) {
        copyText(what, free->what.data(), free->what.size());
        free->begin = reinterpret_cast<std::uintptr_t>(begin);
        free->end = free->begin + bytes;
    }
}

void allowMemory(const void* begin) noexcept {
    const std::lock_guard lock(forbiddenMutex);
    for (ForbiddenMemory& memory : forbidden) {
        if (memory.begin == reinterpret_cast<std::uintptr_t>(begin)) {
            memory = {};
        }
    }
}

}  // namespace korva::tool
