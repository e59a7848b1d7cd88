// Giving a terminal back when a program dies, and noticing that it was stopped meanwhile.
#pragma once

#include <signal.h>
#include <termios.h>

namespace korva::tool {

/// While it lives, a signal that kills this program, for a fault of its own or because somebody wants it,
/// first gives the terminal of standard input and output its modes back and undoes what the view has set;
/// then the program dies of that signal. One at a time, made once the terminal's library knows the terminal.
class TerminalGuard {
public:
    explicit TerminalGuard(const termios& modes);
    ~TerminalGuard();
    TerminalGuard(const TerminalGuard&) = delete;
    TerminalGuard& operator=(const TerminalGuard&) = delete;

    /// Whether the program was stopped and goes on, so that others have used the terminal.
    [[nodiscard]] bool wasContinued() const noexcept;
    /// The same, and it isn't afterwards.
    bool takeContinuation() noexcept;

private:
    struct sigaction continuationBefore {};
};

}  // namespace korva::tool
