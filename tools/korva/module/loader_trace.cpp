#include "korva/module/loader_trace.h"

#include <elf.h>
#include <fcntl.h>
#include <link.h>
#include <spawn.h>
#include <sys/auxv.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "korva/errors.h"

namespace korva::tool {
namespace {

struct Answer {
    std::string text;
    int status = 0;
};

/// The loader that this program was started by, which is the one that loads its modules.
const char* ownLoader() {
    const auto* headers = reinterpret_cast<const ElfW(Phdr)*>(getauxval(AT_PHDR));
    const unsigned long count = getauxval(AT_PHNUM);
    ElfW(Addr) base = 0;
    const char* loader = nullptr;
    for (unsigned long i = 0; i < count; ++i) {
        if (headers[i].p_type == PT_PHDR) {
            base = reinterpret_cast<ElfW(Addr)>(headers) - headers[i].p_vaddr;
        } else if (headers[i].p_type == PT_INTERP) {
            loader = reinterpret_cast<const char*>(base + headers[i].p_vaddr);
        }
    }
    return loader != nullptr ? loader : "";
}

/// This process's environment, and what makes the loader tell instead of run.
std::vector<char*> tellingEnvironment() {
    static std::array<std::string, 3> asked = {"LD_TRACE_LOADED_OBJECTS=1", "LD_WARN=yes", "LD_BIND_NOW=yes"};
    std::vector<char*> environment;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        environment.push_back(*entry);
    }
    for (std::string& entry : asked) {
        environment.push_back(entry.data());
    }
    environment.push_back(nullptr);
    return environment;
}

std::string readToEnd(int descriptor) {
    std::string text;
    std::array<char, 4096> part{};
    ssize_t count = 0;
    while ((count = read(descriptor, part.data(), part.size())) > 0 || (count < 0 && errno == EINTR)) {
        text.append(part.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
    }
    return text;
}

int waitFor(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/// Both streams of the loader, in the order of writing.
Answer askLoader(const std::string& path) {
    std::array<int, 2> ends = {-1, -1};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        fail("cannot ask the loader: {}", systemMessage(errno));
    }
    posix_spawn_file_actions_t streams;
    posix_spawn_file_actions_init(&streams);
    posix_spawn_file_actions_addopen(&streams, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&streams, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&streams, ends[1], STDERR_FILENO);
    std::string loader = ownLoader();
    std::string library = path;
    std::array<char*, 3> arguments = {loader.data(), library.data(), nullptr};
    pid_t process = -1;
    const int error = posix_spawn(&process, loader.c_str(), &streams, nullptr, arguments.data(),
                                  tellingEnvironment().data());
    posix_spawn_file_actions_destroy(&streams);
    close(ends[1]);
    Answer answer;
    if (error == 0) {
        answer.text = readToEnd(ends[0]);
        answer.status = waitFor(process);
    }
    close(ends[0]);
    if (error != 0) {
        fail("cannot ask the loader '{}': {}", loader, systemMessage(error));
    }
    return answer;
}

/// What stands between the two, if the line has both in this order.
std::string_view between(std::string_view line, std::string_view before, std::string_view after) {
    const std::size_t begin = line.find(before);
    const std::size_t end = line.find(after, begin == line.npos ? begin : begin + before.size());
    return end == line.npos ? std::string_view()
                            : line.substr(begin + before.size(), end - begin - before.size());
}

/// A complaint without the library's path, which the loader puts before it, once or twice.
std::string_view withoutPath(std::string_view line, std::string_view path) {
    for (const std::string_view prefix :
         {path, std::string_view(": error while loading shared libraries: "), path, std::string_view(": ")}) {
        if (line.starts_with(prefix)) {
            line.remove_prefix(prefix.size());
        }
    }
    return line;
}

void takeLine(LoaderTrace& trace, std::string_view line, std::string_view path) {
    if (const auto library = between(line, "\t", " => not found"); !library.empty()) {
        trace.missingLibraries.emplace_back(library);
    } else if (const auto symbol = between(line, "undefined symbol: ", "\t"); !symbol.empty()) {
        trace.missingSymbols.emplace_back(symbol);
    } else if (!line.starts_with("\t") && trace.fault.empty()) {
        trace.fault = withoutPath(line, path);
    }
}

}  // namespace

LoaderTrace traceLoader(const std::string& path) {
    const Answer answer = askLoader(path);
    LoaderTrace trace;
    std::string_view rest = answer.text;
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        takeLine(trace, rest.substr(0, end), path);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    if (answer.status != 0 && trace.isClean()) {
        trace.fault = "the loader itself fails on it";
    }
    return trace;
}

}  // namespace korva::tool
