// Where the form of libraries isn't known: their loader has to tell.
#include "korva/doctor/library_contents.h"

namespace korva::tool {

LibraryContents readLibraryContents(const std::filesystem::path&) {
    return {};
}

}  // namespace korva::tool
