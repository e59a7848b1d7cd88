#include "tests/support/conversation.h"

#include <windows.h>

#include <stdexcept>
#include <utility>

namespace korva::test {
namespace {

/// The program inherits its end, and only that.
std::pair<HANDLE, HANDLE> newPipe(bool programReads) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherited, 0)) {
        throw std::runtime_error("no pipe");
    }
    SetHandleInformation(programReads ? writeEnd : readEnd, HANDLE_FLAG_INHERIT, 0);
    return {readEnd, writeEnd};
}

}  // namespace

struct Conversation::Ends {
    HANDLE toProgram = nullptr;
    HANDLE fromProgram = nullptr;
    HANDLE process = nullptr;
};

Conversation::Conversation(const std::string& program) : ends(std::make_unique<Ends>()) {
    const auto input = newPipe(true);
    const auto output = newPipe(false);
    STARTUPINFOA startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = input.first;
    startup.hStdOutput = output.second;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION made{};
    std::string line = '"' + program + '"';
    const BOOL isRunning = CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                          nullptr, &startup, &made);
    CloseHandle(input.first);
    CloseHandle(output.second);
    ends->toProgram = input.second;
    ends->fromProgram = output.first;
    ends->process = made.hProcess;
    if (!isRunning) {
        throw std::runtime_error("can't run " + program);
    }
    CloseHandle(made.hThread);
}

Conversation::~Conversation() {
    CloseHandle(ends->toProgram);
    CloseHandle(ends->fromProgram);
    WaitForSingleObject(ends->process, INFINITE);
    CloseHandle(ends->process);
}

std::string Conversation::ask(std::string line) {
    line += '\n';
    DWORD count = 0;
    if (!WriteFile(ends->toProgram, line.data(), static_cast<DWORD>(line.size()), &count, nullptr)) {
        return {};
    }
    std::string answer;
    char unit = 0;
    while (ReadFile(ends->fromProgram, &unit, 1, &count, nullptr) && count == 1 && unit != '\n') {
        if (unit != '\r') {
            answer += unit;
        }
    }
    return answer;
}

void Conversation::kill() {
    TerminateProcess(ends->process, 1);
    WaitForSingleObject(ends->process, INFINITE);
}

}  // namespace korva::test
