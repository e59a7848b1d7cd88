// A terminal that a test looks at: a server of tmux that nobody else has.
#pragma once

#include <string>
#include <vector>

#include "tests/support/child_process.h"

namespace korva::test {

/// Ends its server, and what runs on it, with this object.
class Tmux {
public:
    /// Runs a shell's commands, whose files are in `folder`.
    Tmux(const std::string& folder, int columns, int rows, const std::string& commands);
    ~Tmux();
    Tmux(const Tmux&) = delete;
    Tmux& operator=(const Tmux&) = delete;

    /// What the terminal shows, a line for each row.
    [[nodiscard]] std::string screen() const;
    /// The same with the sequences of its colours.
    [[nodiscard]] std::string colouredScreen() const;
    /// Keys by their names: "q", "Down", "C-c".
    void press(const std::string& key) const;
    void resize(int columns, int rows) const;

    /// Waits until the screen has `text`. False if it doesn't come.
    [[nodiscard]] bool waitFor(const std::string& text) const;
    [[nodiscard]] bool waitUntilGone(const std::string& text) const;

private:
    Outcome run(std::vector<std::string> arguments) const;

    std::string socket;
};

}  // namespace korva::test
