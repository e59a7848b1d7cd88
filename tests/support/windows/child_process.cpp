#include "tests/support/child_process.h"

#include <windows.h>

#include <array>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/unicode.h"

namespace korva::test {
namespace {

using platform::toWide;
using platform::WideString;

constexpr ULONGLONG patienceMs = 60'000;

/// The program inherits its end, and only that.
std::pair<HANDLE, HANDLE> newPipe(bool programReads) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    if (!CreatePipe(&readEnd, &writeEnd, &inherited, 65536)) {
        throw std::runtime_error("no pipe");
    }
    SetHandleInformation(programReads ? writeEnd : readEnd, HANDLE_FLAG_INHERIT, 0);
    return {readEnd, writeEnd};
}

void closeOnce(HANDLE& handle) {
    if (handle != nullptr) {
        CloseHandle(std::exchange(handle, nullptr));
    }
}

/// As programs take a line apart again: backslashes count as such unless they stand before a quote.
WideString quoted(const WideString& word) {
    WideString text = L"\"";
    std::size_t backslashes = 0;
    for (const WCHAR unit : word) {
        if (unit == L'"') {
            text.append(backslashes + 1, L'\\');
        }
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        text += unit;
    }
    return text.append(backslashes, L'\\') + L'"';
}

WideString commandLine(const Launch& launch) {
    WideString line = quoted(toWide(launch.program));
    for (const std::string& argument : launch.arguments) {
        line += L' ' + quoted(toWide(argument));
    }
    return line;
}

/// The program takes what this process has, which gets its own back afterwards.
class Environment {
public:
    explicit Environment(const std::map<std::string, std::string>& added) {
        for (const auto& [name, value] : added) {
            std::array<WCHAR, 4096> before{};
            const WideString key = toWide(name);
            const DWORD length =
                GetEnvironmentVariableW(key.c_str(), before.data(), static_cast<DWORD>(before.size()));
            kept.emplace_back(key, WideString(before.data(), length));
            SetEnvironmentVariableW(key.c_str(), toWide(value).c_str());
        }
    }
    ~Environment() {
        for (const auto& [name, value] : kept) {
            SetEnvironmentVariableW(name.c_str(), value.empty() ? nullptr : value.c_str());
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    std::vector<std::pair<WideString, WideString>> kept;
};

/// Takes what is there. False at the end of the stream.
bool readSome(HANDLE readEnd, std::string& into, bool& gotSome) {
    DWORD there = 0;
    if (!PeekNamedPipe(readEnd, nullptr, 0, nullptr, &there, nullptr)) {
        return false;
    }
    std::string bytes(there, '\0');
    DWORD count = 0;
    if (there != 0 && !ReadFile(readEnd, bytes.data(), there, &count, nullptr)) {
        return false;
    }
    into.append(bytes, 0, count);
    gotSome = gotSome || count != 0;
    return true;
}

}  // namespace

struct ChildProcess::Ends {
    HANDLE process = nullptr;
    HANDLE inputEnd = nullptr;
    HANDLE outputEnd = nullptr;
    HANDLE errorEnd = nullptr;
};

ChildProcess::ChildProcess(const Launch& launch) : ends(std::make_unique<Ends>()) {
    auto in = newPipe(true);
    auto out = newPipe(false);
    auto err = newPipe(false);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = in.first;
    startup.hStdOutput = out.second;
    startup.hStdError = err.second;
    PROCESS_INFORMATION made{};
    WideString line = commandLine(launch);
    const Environment environment(launch.environment);
    const BOOL isRunning = CreateProcessW(toWide(launch.program).c_str(), line.data(), nullptr, nullptr, TRUE,
                                          0, nullptr, nullptr, &startup, &made);
    CloseHandle(in.first);
    CloseHandle(out.second);
    CloseHandle(err.second);
    *ends = {made.hProcess, in.second, out.first, err.first};
    if (!isRunning) {
        throw std::runtime_error("can't run " + launch.program);
    }
    CloseHandle(made.hThread);
    if (!launch.input.empty()) {
        say(launch.input);
    }
    if (!launch.inputStaysOpen) {
        closeOnce(ends->inputEnd);
    }
}

ChildProcess::~ChildProcess() {
    if (ends->process != nullptr) {
        TerminateProcess(ends->process, 1);
        WaitForSingleObject(ends->process, INFINITE);
    }
    for (HANDLE* const handle : {&ends->process, &ends->inputEnd, &ends->outputEnd, &ends->errorEnd}) {
        closeOnce(*handle);
    }
}

void ChildProcess::send(int /*signal*/) const {
    // What the system does when the key is pressed at a console, which needn't be here: a thread in the
    // program begins with this function. Its library lies at one address in all of them.
    const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernelbase.dll"), "CtrlRoutine")));
    void* const event = reinterpret_cast<void*>(std::uintptr_t{CTRL_BREAK_EVENT});
    const HANDLE thread = CreateRemoteThread(ends->process, nullptr, 0, routine, event, 0, nullptr);
    if (routine == nullptr || thread == nullptr) {
        throw std::runtime_error("no Ctrl-Break: error " + std::to_string(GetLastError()));
    }
    CloseHandle(thread);
}

void ChildProcess::say(std::string_view text) {
    while (!text.empty()) {
        DWORD count = 0;
        if (!WriteFile(ends->inputEnd, text.data(), static_cast<DWORD>(text.size()), &count, nullptr)) {
            throw std::runtime_error("the program doesn't read");
        }
        text.remove_prefix(count);
    }
}

void ChildProcess::closeOutput() {
    closeOnce(ends->outputEnd);
}

/// Waits until something has come on either stream. False when both are at their end, or nothing comes any
/// more.
bool ChildProcess::readMore() {
    const ULONGLONG begin = GetTickCount64();
    bool gotSome = false;
    while (!gotSome && GetTickCount64() - begin < patienceMs) {
        if (ends->outputEnd == nullptr && ends->errorEnd == nullptr) {
            return false;
        }
        if (ends->outputEnd != nullptr && !readSome(ends->outputEnd, outcome.output, gotSome)) {
            closeOnce(ends->outputEnd);
        }
        if (ends->errorEnd != nullptr && !readSome(ends->errorEnd, outcome.error, gotSome)) {
            closeOnce(ends->errorEnd);
        }
        if (!gotSome) {
            Sleep(1);  // A pipe of this kind can't be waited for.
        }
    }
    return gotSome;
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
    if (ends->outputEnd != nullptr || ends->errorEnd != nullptr) {
        TerminateProcess(ends->process, 1);
    }
    WaitForSingleObject(ends->process, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(ends->process, &exitCode);
    closeOnce(ends->process);
    outcome.exitCode = static_cast<int>(exitCode);
    return outcome;
}

Outcome run(const Launch& launch) {
    return ChildProcess(launch).wait();
}

}  // namespace korva::test
