#include "platform/module_library.h"

#include <dlfcn.h>
#include <limits.h>
#include <link.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <system_error>

#include "platform/linux/own_library.h"

namespace korva::platform {
namespace {

/// A drive, by which a name is no path below a folder on any system.
bool hasDrive(std::string_view name) noexcept {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return name.size() >= 2 && isLetter(name[0]) && name[1] == ':';
}

/// Whether an address lies in the library itself, and not in one that it needs.
bool isPartOf(void* library, void* address) noexcept {
    link_map* map = nullptr;
    dl_find_object found;
    return dlinfo(library, RTLD_DI_LINKMAP, static_cast<void*>(&map)) == 0 &&
           _dl_find_object(address, &found) == 0 && found.dlfo_link_map == map;
}

}  // namespace

ModuleLibrary ModuleLibrary::load(const std::filesystem::path& file) noexcept {
    // The loader searches its own folders for a name without a folder.
    return ModuleLibrary(file.is_absolute() ? dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL) : nullptr);
}

ModuleLibrary ModuleLibrary::load(const std::filesystem::path& file, std::string& reason) {
    dlerror();  // What it holds may be of an earlier call.
    ModuleLibrary library = load(file);
    const char* const words = library ? nullptr : dlerror();
    reason = words == nullptr ? "" : words;
    return library;
}

void* ModuleLibrary::find(const char* name) const noexcept {
    if (handle == nullptr) {
        return nullptr;
    }
    // The loader goes on to what the library needs; a module has only what it exports itself.
    void* const found = dlsym(handle, name);
    return isPartOf(handle, found) ? found : nullptr;
}

void ModuleLibrary::unload() noexcept {
    if (void* const library = std::exchange(handle, nullptr)) {
        dlclose(library);
    }
}

bool isLibraryLoaded(const std::filesystem::path& file) noexcept {
    void* const library = file.is_absolute() ? dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD) : nullptr;
    if (library != nullptr) {
        dlclose(library);
    }
    return library != nullptr;
}

std::filesystem::path libraryPath(const std::filesystem::path& folder, std::string_view name) {
    if (name.size() > static_cast<std::size_t>(INT32_MAX)) {
        throw std::length_error("a library's name is too long");
    }
    const std::filesystem::path file = std::string(name) + ".so";
    return file.has_root_path() || hasDrive(name) ? file : folder / file;
}

std::filesystem::path ownLibraryPath() {
    const char* const name = ownLibraryName();
    if (name == nullptr) {
        std::error_code none;
        return std::filesystem::read_symlink("/proc/self/exe", none);
    }
    // The name may be relative to what was the current folder then; the loader has remembered the folder
    // whole.
    std::array<char, 2 * PATH_MAX> folder{};
    void* const library = dlopen(name, RTLD_NOW | RTLD_NOLOAD);
    const bool isKnown = library != nullptr && dlinfo(library, RTLD_DI_ORIGIN, folder.data()) == 0;
    if (library != nullptr) {
        dlclose(library);
    }
    return isKnown ? folder.data() / std::filesystem::path(name).filename() : std::filesystem::path();
}

std::filesystem::path ownLibraryFolder() {
    return ownLibraryPath().parent_path();
}

}  // namespace korva::platform
