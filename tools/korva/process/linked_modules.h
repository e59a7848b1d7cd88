// An object's library and a folder of modules, brought together.
#pragma once

#include <filesystem>

namespace korva::tool {

/// A temporary folder with a link to a library and to all that lies in a folder of modules: an object looks
/// for modules beside its own library and nowhere else. It goes when this goes; a tool that is killed leaves
/// it, `korva-modules-` and six more characters.
class LinkedModules {
public:
    /// Both paths are absolute. Throws `ToolError`.
    LinkedModules(const std::filesystem::path& library, const std::filesystem::path& modules);
    ~LinkedModules();
    LinkedModules(const LinkedModules&) = delete;
    LinkedModules& operator=(const LinkedModules&) = delete;

    /// The library's link, to be loaded by.
    [[nodiscard]] std::filesystem::path library() const { return folder / libraryName; }

private:
    void linkAll(const std::filesystem::path& library, const std::filesystem::path& modules) const;

    const std::filesystem::path libraryName;
    const std::filesystem::path folder;
};

}  // namespace korva::tool
