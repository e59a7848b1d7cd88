#include "korva/doctor/library_contents.h"

#include <utility>

#include "korva/errors.h"
#include "korva/file_path.h"
#include "korva/module/library_file.h"

namespace korva::tool {

// The loader takes a file's headers at their word, and one that was cut short would end this process.
LibraryContents readLibraryContents(const std::filesystem::path& file) {
    try {
        LibraryFile contents = readLibraryFile(textOfPath(file));
        if (contents.exports.empty()) {
            // The list may have been stripped away, which the loader doesn't mind.
            return {std::move(contents.fault)};
        }
        return {std::move(contents.fault), std::move(contents.exports)};
    } catch (const ToolError& error) {
        return {error.what()};
    }
}

}  // namespace korva::tool
