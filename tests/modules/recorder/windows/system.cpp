#include "tests/modules/recorder/system.h"

#include <windows.h>

#include <filesystem>

namespace korva::recorder {
namespace {

/// What all writers to logs take turns by, in whatever process: the system doesn't promise to move to the end
/// and write in one step.
class Turn {
public:
    Turn() : mutex(CreateMutexA(nullptr, FALSE, "Local\\korva_recorder")) {
        WaitForSingleObject(mutex, INFINITE);
    }
    ~Turn() {
        ReleaseMutex(mutex);
        CloseHandle(mutex);
    }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    HANDLE mutex;
};

}  // namespace

std::string environmentText(const char* name) {
    std::string text(GetEnvironmentVariableA(name, nullptr, 0), '\0');
    text.resize(GetEnvironmentVariableA(name, text.data(), static_cast<DWORD>(text.size())));
    return text;
}

std::string ownName() {
    HMODULE own = nullptr;
    GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCSTR>(&ownName), &own);
    std::string file(32768, '\0');
    file.resize(GetModuleFileNameA(own, file.data(), static_cast<DWORD>(file.size())));
    return std::filesystem::path(file).stem().string();
}

std::uint64_t processNumber() {
    return GetCurrentProcessId();
}

std::uint64_t threadNumber() {
    return GetCurrentThreadId();
}

void append(const std::string& file, const std::string& text) {
    const Turn turn;
    HANDLE const end = CreateFileA(file.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                   nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (end != INVALID_HANDLE_VALUE) {
        DWORD written = 0;
        WriteFile(end, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        CloseHandle(end);
    }
}

}  // namespace korva::recorder
