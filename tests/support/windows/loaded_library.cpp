#include "tests/support/loaded_library.h"

#include <windows.h>

#include <stdexcept>
#include <utility>

namespace korva::test {

LoadedLibrary::LoadedLibrary(const std::string& path) : library(LoadLibraryA(path.c_str())) {
    if (library == nullptr) {
        throw std::runtime_error("can't load " + path + ": error " + std::to_string(GetLastError()));
    }
}

void LoadedLibrary::close() {
    if (library != nullptr) {
        FreeLibrary(static_cast<HMODULE>(std::exchange(library, nullptr)));
    }
}

void* LoadedLibrary::symbol(const std::string& name) const {
    const auto found = GetProcAddress(static_cast<HMODULE>(library), name.c_str());
    if (found == nullptr) {
        throw std::runtime_error("no function " + name);
    }
    return reinterpret_cast<void*>(found);
}

bool isLoaded(const std::string& path) {
    return GetModuleHandleA(path.c_str()) != nullptr;
}

}  // namespace korva::test
