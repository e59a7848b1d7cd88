// What stands in the file of a library, as far as that can be seen without loading it.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korva::tool {

struct LibraryContents {
    std::string fault{};  ///< Why no program here can load it, if that is known before.
    std::optional<std::vector<std::string>> exports{};  ///< Its functions, where the system's form is known.
};

/// Of a file that is there.  [blocks]
[[nodiscard]] LibraryContents readLibraryContents(const std::filesystem::path& file);

}  // namespace korva::tool
