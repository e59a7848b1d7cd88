#include "tests/support/run_program.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korva::test {

int runProgram(const std::string& program, const std::vector<std::string>& arguments) {
    std::vector<std::string> texts{program};
    texts.insert(texts.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawn(&process, program.c_str(), nullptr, nullptr, pointers.data(), environ) != 0) {
        return -1;
    }
    int status = 0;
    return waitpid(process, &status, 0) == process && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace korva::test
