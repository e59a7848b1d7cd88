// A library that tells which file and folder it takes for its own.
#include <cstddef>
#include <string>

#include "platform/module_library.h"

namespace {

/// Writes the path to `text`, as far as it fits. Gives its length.
std::size_t tell(const std::string& path, char* text, std::size_t size) {
    path.copy(text, size);
    return path.size();
}

}  // namespace

extern "C" __attribute__((visibility("default"))) std::size_t tellOwnFolder(char* text, std::size_t size) {
    return tell(korva::platform::ownLibraryFolder().string(), text, size);
}

extern "C" __attribute__((visibility("default"))) std::size_t tellOwnPath(char* text, std::size_t size) {
    return tell(korva::platform::ownLibraryPath().string(), text, size);
}
