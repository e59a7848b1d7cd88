#include "tests/cli/monitor/tmux.h"

#include <gtest/gtest.h>

#include "tests/support/child_process.h"
#include "tests/support/wait_until.h"

namespace korva::test {
namespace {

/// One that ends keeps its socket for a while.
std::string ownSocket(const std::string& folder) {
    static int count = 0;
    return folder + "/tmux" + std::to_string(++count);
}

}  // namespace

Tmux::Tmux(const std::string& folder, int columns, int rows, const std::string& commands)
    : socket(ownSocket(folder)) {
    const Outcome outcome = run({"new-session", "-d", "-x", std::to_string(columns), "-y",
                                 std::to_string(rows), "/bin/sh", "-c", commands});
}

Tmux::~Tmux() {
    run({"kill-server"});
}

std::string Tmux::screen() const {
    return run({"capture-pane", "-p"}).output;
}

std::string Tmux::colouredScreen() const {
    return run({"capture-pane", "-p", "-e"}).output;
}

void Tmux::press(const std::string& key) const {
    run({"send-keys", key});
}

void Tmux::resize(int columns, int rows) const {
    run({"resize-window", "-x", std::to_string(columns), "-y", std::to_string(rows)});
}

bool Tmux::waitFor(const std::string& text) const {
    return waitUntil([&] { return screen().find(text) != std::string::npos; });
}

bool Tmux::waitUntilGone(const std::string& text) const {
    return waitUntil([&] { return screen().find(text) == std::string::npos; });
}

Outcome Tmux::run(std::vector<std::string> arguments) const {
    const std::vector<std::string> server = {"-u", "-S", socket, "-f", "/dev/null"};
    arguments.insert(arguments.begin(), server.begin(), server.end());
    return test::run({.program = KORVA_TMUX,
                      .arguments = arguments,
                      .environment = {{"LC_ALL", "C.UTF-8"}, {"TMUX", ""}}});
}

}  // namespace korva::test
