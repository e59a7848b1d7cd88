// What stands in the file of a library, seen without loading it. The only header that stands for libelf.
#pragma once

#include <string>
#include <vector>

namespace korva::tool {

/// A file that may be a library of this system.
struct LibraryFile {
    std::string fault{};                 ///< Why it is none that can be loaded here; empty if it is one.
    std::vector<std::string> exports{};  ///< Names of the functions that it offers, in no order.
    std::vector<std::string> needs{};    ///< Names of the libraries that it asks for.
};

/// Throws `ToolError` if the file isn't there, is a folder, or can't be read.
[[nodiscard]] LibraryFile readLibraryFile(const std::string& path);

}  // namespace korva::tool
