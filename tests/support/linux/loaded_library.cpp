#include "tests/support/loaded_library.h"

#include <dlfcn.h>
#include <link.h>

#include <stdexcept>
#include <utility>

namespace korva::test {
namespace {

/// Stops at the library whose path `data` is.
int isThatLibrary(dl_phdr_info* loaded, std::size_t, void* data) {
    return *static_cast<const std::string*>(data) == loaded->dlpi_name;
}

}  // namespace

LoadedLibrary::LoadedLibrary(const std::string& path) : library(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (library == nullptr) {
        throw std::runtime_error(dlerror());
    }
}

void LoadedLibrary::close() {
    if (library != nullptr) {
        dlclose(std::exchange(library, nullptr));
    }
}

void* LoadedLibrary::symbol(const std::string& name) const {
    void* const found = dlsym(library, name.c_str());
    if (found == nullptr) {
        throw std::runtime_error("no function " + name);
    }
    return found;
}

bool isLoaded(const std::string& path) {
    std::string name = path;
    // Asking with dlopen would hold the library for a moment, and unload it in place of another.
    return dl_iterate_phdr(isThatLibrary, &name) != 0;
}

}  // namespace korva::test
