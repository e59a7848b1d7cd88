// A folder for one test.
#pragma once

#include <filesystem>
#include <string>

namespace korva::test {

/// A new folder, which goes with all that is in it. Raises `std::filesystem::filesystem_error` if there is
/// none to be had.
class OwnFolder {
public:
    OwnFolder();
    ~OwnFolder();
    OwnFolder(const OwnFolder&) = delete;
    OwnFolder& operator=(const OwnFolder&) = delete;

    /// An absolute path.
    [[nodiscard]] const std::filesystem::path& path() const noexcept { return folder; }

    /// Puts a copy of a library here, under a name without suffix; gives its path.
    std::filesystem::path putLibrary(const std::filesystem::path& library, const std::string& name) const;

    /// The same, with `other` wherever the library has `text`, which is as long. Raises `std::runtime_error`
    /// if it has it nowhere.
    std::filesystem::path putLibraryWith(const std::filesystem::path& library, const std::string& name,
                                         const std::string& text, const std::string& other) const;

private:
    std::filesystem::path folder;
};

}  // namespace korva::test
