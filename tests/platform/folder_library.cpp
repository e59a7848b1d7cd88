// A library that tells which folder it takes for its own.
#include <cstddef>
#include <string>

#include "platform/module_library.h"

/// Writes the path to `text`, as far as it fits. Gives its length.
extern "C" __attribute__((visibility("default"))) std::size_t tellOwnFolder(char* text, std::size_t size) {
    const std::string folder = korva::platform::ownLibraryFolder().string();
    folder.copy(text, size);
    return folder.size();
}
