#include "platform/module_library.h"

#include <windows.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <system_error>

#include "platform/windows/own_library.h"
#include "platform/windows/system_error.h"

namespace korva::platform {
namespace {

/// While it lives, this thread's failures to load show no window.
class NoMessages {
public:
    NoMessages() noexcept { SetThreadErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX, &former); }
    ~NoMessages() { SetThreadErrorMode(former, nullptr); }
    NoMessages(const NoMessages&) = delete;
    NoMessages& operator=(const NoMessages&) = delete;

private:
    DWORD former = 0;
};

/// In the code page of the process, as the names of libraries are.
std::wstring wideName(std::string_view name) {
    if (name.size() > static_cast<std::size_t>(INT_MAX)) {
        throw std::length_error("a library's name is too long");
    }
    if (name.empty()) {
        return {};
    }
    const int length = static_cast<int>(name.size());
    std::wstring wide(
        static_cast<std::size_t>(MultiByteToWideChar(CP_ACP, 0, name.data(), length, nullptr, 0)), L'\0');
    MultiByteToWideChar(CP_ACP, 0, name.data(), length, wide.data(), static_cast<int>(wide.size()));
    return wide;
}

}  // namespace

ModuleLibrary ModuleLibrary::load(const std::filesystem::path& file) noexcept {
    const NoMessages noMessages;
    return ModuleLibrary(file.has_root_path() ? LoadLibraryW(file.c_str()) : nullptr);
}

ModuleLibrary ModuleLibrary::load(const std::filesystem::path& file, std::string& reason) {
    SetLastError(ERROR_SUCCESS);
    ModuleLibrary library = load(file);
    reason = library || GetLastError() == ERROR_SUCCESS ? "" : lastSystemError().message();
    return library;
}

void* ModuleLibrary::find(const char* name) const noexcept {
    return handle == nullptr ? nullptr
                             : reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}

void ModuleLibrary::unload() noexcept {
    if (void* const library = std::exchange(handle, nullptr)) {
        FreeLibrary(static_cast<HMODULE>(library));
    }
}

bool isLibraryLoaded(const std::filesystem::path& file) noexcept {
    HMODULE module = nullptr;
    return file.has_root_path() &&
           GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT, file.c_str(), &module) != FALSE;
}

std::filesystem::path libraryPath(const std::filesystem::path& folder, std::string_view name) {
    const std::filesystem::path file = wideName(name) + L".dll";
    return file.has_root_path() ? file : folder / file;
}

std::filesystem::path ownLibraryPath() {
    HMODULE const module = ownModule();
    // A path that doesn't fit is cut to the buffer's size.
    std::wstring file(MAX_PATH, L'\0');
    DWORD length = GetModuleFileNameW(module, file.data(), static_cast<DWORD>(file.size()));
    while (length == file.size()) {
        file.resize(2 * file.size());
        length = GetModuleFileNameW(module, file.data(), static_cast<DWORD>(file.size()));
    }
    file.resize(length);
    return file;
}

std::filesystem::path ownLibraryFolder() {
    return ownLibraryPath().parent_path();
}

}  // namespace korva::platform
