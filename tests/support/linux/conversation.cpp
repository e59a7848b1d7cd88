#include "tests/support/conversation.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <utility>

namespace korva::test {
namespace {

/// Neither end goes to other programs.
std::array<int, 2> newPipe() {
    std::array<int, 2> pipe{};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    return pipe;
}

bool start(const std::string& program, int input, int output, pid_t& process) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    std::string name = program;
    const std::array<char*, 2> arguments = {name.data(), nullptr};
    const int result = posix_spawn(&process, program.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return result == 0;
}

}  // namespace

struct Conversation::Ends {
    int toProgram = -1;
    int fromProgram = -1;
    pid_t process = 0;  ///< 0 once it is collected.

    void collect() {
        if (process != 0) {
            int status = 0;
            waitpid(std::exchange(process, 0), &status, 0);
        }
    }
};

Conversation::Conversation(const std::string& program) : ends(std::make_unique<Ends>()) {
    const auto input = newPipe();
    const auto output = newPipe();
    const bool isRunning = start(program, input[0], output[1], ends->process);
    close(input[0]);
    close(output[1]);
    ends->toProgram = input[1];
    ends->fromProgram = output[0];
    if (!isRunning) {
        throw std::runtime_error("can't run " + program);
    }
}

Conversation::~Conversation() {
    close(ends->toProgram);
    close(ends->fromProgram);
    ends->collect();
}

std::string Conversation::ask(std::string line) {
    line += '\n';
    std::size_t done = 0;
    while (done < line.size()) {
        const ssize_t written = write(ends->toProgram, line.data() + done, line.size() - done);
        if (written <= 0) {
            return {};
        }
        done += static_cast<std::size_t>(written);
    }
    std::string answer;
    for (char unit = 0; read(ends->fromProgram, &unit, 1) == 1 && unit != '\n';) {
        answer += unit;
    }
    return answer;
}

void Conversation::kill() {
    if (ends->process != 0) {
        ::kill(ends->process, SIGKILL);
    }
    ends->collect();
}

}  // namespace korva::test
