// Libraries that others made, loaded and unloaded while the process runs.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace korva::platform {

/// A reference on a loaded library, or none. Not for several threads at once; several of one library are.
class ModuleLibrary {
public:
    ModuleLibrary() noexcept = default;
    ModuleLibrary(ModuleLibrary&& other) noexcept : handle(std::exchange(other.handle, nullptr)) {}
    ModuleLibrary& operator=(ModuleLibrary&& other) noexcept {
        std::swap(handle, other.handle);
        return *this;
    }
    ~ModuleLibrary() { unload(); }

    /// Loads the file, and binds all that it needs; it shows no message if that fails, and gives no reason:
    /// the result is empty. Nothing is searched for: where the system would do so for a path, it isn't
    /// loaded. [any, blocks]
    [[nodiscard]] static ModuleLibrary load(const std::filesystem::path& file) noexcept;
    /// The same; where it fails, `reason` is the system's words for that, if it has any.
    [[nodiscard]] static ModuleLibrary load(const std::filesystem::path& file, std::string& reason);

    /// What the library itself exports by that name; null if there is nothing.
    [[nodiscard]] void* find(const char* name) const noexcept;

    /// Drops the reference; the last one of the process unloads the library.  [any, blocks]
    void unload() noexcept;

    explicit operator bool() const noexcept { return handle != nullptr; }

private:
    explicit ModuleLibrary(void* loaded) noexcept : handle(loaded) {}

    void* handle = nullptr;
};

/// Whether this process has the file loaded, whoever did it.  [any]
[[nodiscard]] bool isLibraryLoaded(const std::filesystem::path& file) noexcept;

/// Where the library `name` lies for someone who looks in `folder`: there, with the system's suffix for
/// libraries. A name that has a root or a drive stays as it is, but for the suffix. Raises
/// `std::length_error` for a name longer than 2^31 - 1 bytes.  [any]
[[nodiscard]] std::filesystem::path libraryPath(const std::filesystem::path& folder, std::string_view name);

/// The whole path of the library, or program, that this is linked into, by the name that it was loaded by.
/// Empty if the system doesn't tell.  [any]
[[nodiscard]] std::filesystem::path ownLibraryPath();

/// Its folder.  [any]
[[nodiscard]] std::filesystem::path ownLibraryFolder();

}  // namespace korva::platform
