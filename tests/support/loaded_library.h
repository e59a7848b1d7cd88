// A library that a test loads and unloads, and whether it is loaded without holding it.
#pragma once

#include <string>

namespace korva::test {

/// A reference on the library at an absolute path. Raises `std::runtime_error` if it can't be loaded.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const std::string& path);
    ~LoadedLibrary() { close(); }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    /// An exported function. Raises `std::runtime_error` if there is none of that name.
    template <typename Function>
    [[nodiscard]] Function* function(const std::string& name) const {
        return reinterpret_cast<Function*>(symbol(name));
    }

    /// Drops the reference; does nothing the second time.
    void close();

private:
    [[nodiscard]] void* symbol(const std::string& name) const;

    void* library;
};

/// Whether a library of that path is loaded, whoever holds it.
[[nodiscard]] bool isLoaded(const std::string& path);

}  // namespace korva::test
