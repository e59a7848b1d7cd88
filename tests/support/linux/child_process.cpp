#include "tests/support/child_process.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

namespace korva::test {
namespace {

constexpr int patienceMs = 60'000;

struct Pipe {
    int readEnd = -1;
    int writeEnd = -1;
};

Pipe makePipe() {
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    return {ends[0], ends[1]};
}

Pipe makeTerminal() {
    Pipe ends;
    if (openpty(&ends.readEnd, &ends.writeEnd, nullptr, nullptr, nullptr) != 0) {
        throw std::runtime_error("no terminal");
    }
    fcntl(ends.readEnd, F_SETFD, FD_CLOEXEC);
    fcntl(ends.writeEnd, F_SETFD, FD_CLOEXEC);
    return ends;
}

std::vector<std::string> fullEnvironment(const Launch& launch) {
    std::vector<std::string> all;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        if (!launch.environment.contains(std::string(text.substr(0, text.find('='))))) {
            all.emplace_back(text);
        }
    }
    for (const auto& [name, value] : launch.environment) {
        std::string& entry = all.emplace_back(name);
        entry += '=';
        entry += value;
    }
    return all;
}

std::vector<char*> asPointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

/// Between fork and exec: only what is allowed in a copy of a process with threads. False ends the child.
bool dropPrivileges() {
    return geteuid() != 0 || (prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0) == 0 &&
                              prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0) == 0);
}

void prepareSignals(const Launch& launch) {
    for (const int common : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) {
        signal(common, SIG_DFL);
    }
    for (const int ignored : launch.ignoredSignals) {
        signal(ignored, SIG_IGN);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
}

void prepareStreams(const Launch& launch, int in, int out, int err) {
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    for (const int stream : launch.closedStreams) {
        close(stream);
    }
}

[[noreturn]] void becomeProgram(const Launch& launch, char* const* arguments, char* const* environment) {
    prepareSignals(launch);
    if (launch.fileSizeLimit) {
        const rlimit limit = {*launch.fileSizeLimit, *launch.fileSizeLimit};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (!launch.obeysPermissions || dropPrivileges()) {
        execve(launch.program.c_str(), arguments, environment);
    }
    _exit(127);
}

void writeInput(int writeEnd, const std::string& input) {
    fcntl(writeEnd, F_SETFL, O_NONBLOCK);
    if (write(writeEnd, input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
        throw std::runtime_error("the input doesn't fit into a pipe");
    }
}

/// False at the end of the stream. A terminal whose other side is gone gives an error there.
bool readSome(int readEnd, std::string& into) {
    std::array<char, 4096> bytes;
    const ssize_t count = read(readEnd, bytes.data(), bytes.size());
    if (count > 0) {
        into.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

void closeOnce(int& descriptor) {
    if (descriptor >= 0) {
        close(descriptor);
        descriptor = -1;
    }
}

}  // namespace

struct ChildProcess::Ends {
    pid_t process = -1;
    int inputEnd = -1;
    int outputEnd = -1;
    int errorEnd = -1;
};

ChildProcess::ChildProcess(const Launch& launch) : ends(std::make_unique<Ends>()) {
    std::vector<std::string> words = launch.arguments;
    words.insert(words.begin(), launch.program);
    std::vector<std::string> variables = fullEnvironment(launch);
    const auto arguments = asPointers(words);
    const auto environment = asPointers(variables);
    Pipe in = makePipe();
    Pipe out = makePipe();
    Pipe err = launch.errorIsTerminal ? makeTerminal() : makePipe();
    writeInput(in.writeEnd, launch.input);
    if (!launch.outputPath.empty()) {
        closeOnce(out.writeEnd);
        out.writeEnd = open(launch.outputPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    }
    ends->process = fork();
    if (ends->process == 0) {
        prepareStreams(launch, in.readEnd, out.writeEnd, err.writeEnd);
        becomeProgram(launch, arguments.data(), environment.data());
    }
    closeOnce(in.readEnd);
    closeOnce(out.writeEnd);
    closeOnce(err.writeEnd);
    if (!launch.inputStaysOpen) {
        closeOnce(in.writeEnd);
    }
    ends->inputEnd = in.writeEnd;
    ends->outputEnd = out.readEnd;
    ends->errorEnd = err.readEnd;
}

ChildProcess::~ChildProcess() {
    if (ends->process > 0) {
        send(SIGKILL);
        waitpid(ends->process, nullptr, 0);
    }
    closeOnce(ends->inputEnd);
    closeOnce(ends->outputEnd);
    closeOnce(ends->errorEnd);
}

void ChildProcess::send(int signal) const {
    kill(ends->process, signal);
}

void ChildProcess::say(std::string_view text) {
    fcntl(ends->inputEnd, F_SETFL, 0);
    while (!text.empty()) {
        const ssize_t count = write(ends->inputEnd, text.data(), text.size());
        if (count < 0) {
            throw std::runtime_error("the program doesn't read");
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

void ChildProcess::closeOutput() {
    closeOnce(ends->outputEnd);
}

/// Takes what has come on either stream. False when both are at their end, or nothing comes any more.
bool ChildProcess::readMore() {
    std::array<pollfd, 2> streams = {pollfd{ends->outputEnd, POLLIN, 0}, pollfd{ends->errorEnd, POLLIN, 0}};
    if ((ends->outputEnd < 0 && ends->errorEnd < 0) ||
        poll(streams.data(), streams.size(), patienceMs) <= 0) {
        return false;
    }
    if (streams[0].revents != 0 && !readSome(ends->outputEnd, outcome.output)) {
        closeOnce(ends->outputEnd);
    }
    if (streams[1].revents != 0 && !readSome(ends->errorEnd, outcome.error)) {
        closeOnce(ends->errorEnd);
    }
    return true;
}

bool ChildProcess::waitForError(std::string_view text) {
    return waitForText(outcome.error, text);
}

bool ChildProcess::waitForOutput(std::string_view text) {
    return waitForText(outcome.output, text);
}

bool ChildProcess::waitForText(const std::string& stream, std::string_view text) {
    while (stream.find(text) == std::string::npos) {
        if (!readMore()) {
            return false;
        }
    }
    return true;
}

Outcome ChildProcess::wait() {
    while (readMore()) {
    }
    if (ends->outputEnd >= 0 || ends->errorEnd >= 0) {
        send(SIGKILL);
    }
    int status = 0;
    waitpid(ends->process, &status, 0);
    ends->process = -1;
    if (WIFEXITED(status)) {
        outcome.exitCode = WEXITSTATUS(status);
    } else {
        outcome.signal = WTERMSIG(status);
    }
    return outcome;
}

Outcome run(const Launch& launch) {
    return ChildProcess(launch).wait();
}

}  // namespace korva::test
