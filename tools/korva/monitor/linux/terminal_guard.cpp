#include "korva/monitor/linux/terminal_guard.h"

#include <curses.h>
#include <term.h>  // behind the others: its short names replace everybody's
#include <unistd.h>

#include <array>
#include <cstddef>

namespace korva::tool {
namespace {

/// All that end a program by default and aren't caught for a good end.
constexpr std::array deadlySignals = {SIGSEGV, SIGABRT, SIGBUS,  SIGFPE,  SIGILL,  SIGSYS,
                                      SIGTRAP, SIGQUIT, SIGXCPU, SIGALRM, SIGUSR1, SIGUSR2};

/// What gives the terminal back when no other code can be trusted any more. Filled before the handlers are in
/// place, and only read by them.
struct LastResort {
    termios modes{};
    std::array<char, 256> text{};
    std::size_t length = 0;
    std::array<struct sigaction, deadlySignals.size()> before{};
};
LastResort lastResort;

volatile sig_atomic_t continued = 0;

extern "C" void noteContinuation(int) {
    continued = 1;
}

/// Calls only what a handler may: the terminal's library isn't.
extern "C" void giveTerminalBackAndDie(int signal) {
    tcsetattr(STDIN_FILENO, TCSANOW, &lastResort.modes);
    static_cast<void>(!write(STDOUT_FILENO, lastResort.text.data(), lastResort.length));
    for (std::size_t i = 0; i < deadlySignals.size(); ++i) {
        if (deadlySignals[i] == signal) {
            sigaction(signal, &lastResort.before[i], nullptr);
        }
    }
    raise(signal);  // held back until this function ends
}

int appendToLastResort(int c) {
    if (lastResort.length < lastResort.text.size()) {
        lastResort.text[lastResort.length++] = static_cast<char>(c);
    }
    return c;
}

/// The sequences that undo what the view sets: colours, the hidden cursor, the keypad, the other screen.
void prepareLastResort(const termios& modes) {
    lastResort.modes = modes;
    lastResort.length = 0;
    for (const char* const name : {"sgr0", "cnorm", "rmkx", "rmcup"}) {
        const char* const sequence = tigetstr(name);
        if (sequence != nullptr && sequence != reinterpret_cast<const char*>(-1)) {
            tputs(sequence, 1, appendToLastResort);
        }
    }
}

/// A stack for the handlers, so that they run after an overflow too.
void giveHandlersAStack() {
    static std::array<char, 65536> stack;
    stack_t now{};
    if (sigaltstack(nullptr, &now) == 0 && (now.ss_flags & SS_DISABLE) != 0) {
        const stack_t own = {.ss_sp = stack.data(), .ss_flags = 0, .ss_size = stack.size()};
        sigaltstack(&own, nullptr);
    }
}

}  // namespace

TerminalGuard::TerminalGuard(const termios& modes) {
    prepareLastResort(modes);
    giveHandlersAStack();
    struct sigaction action {};
    action.sa_handler = giveTerminalBackAndDie;
    action.sa_flags = SA_ONSTACK;
    sigfillset(&action.sa_mask);
    for (std::size_t i = 0; i < deadlySignals.size(); ++i) {
        sigaction(deadlySignals[i], &action, &lastResort.before[i]);
    }
    action.sa_handler = noteContinuation;
    action.sa_flags = SA_RESTART;
    sigaction(SIGCONT, &action, &continuationBefore);
}

TerminalGuard::~TerminalGuard() {
    for (std::size_t i = 0; i < deadlySignals.size(); ++i) {
        sigaction(deadlySignals[i], &lastResort.before[i], nullptr);
    }
    sigaction(SIGCONT, &continuationBefore, nullptr);
}

bool TerminalGuard::wasContinued() const noexcept {
    return continued != 0;
}

bool TerminalGuard::takeContinuation() noexcept {
    const bool was = wasContinued();
    continued = 0;
    return was;
}

}  // namespace korva::tool
