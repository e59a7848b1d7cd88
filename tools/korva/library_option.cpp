#include "korva/library_option.h"

#include "korva/errors.h"
#include "korva/file_path.h"
#include "korva/host/audio_object_library.h"

namespace korva::tool {

std::filesystem::path libraryFile(bool isNamed, const std::string& name) {
    if (!isNamed) {
        return ownAudioObjectLibrary();
    }
    if (name.empty()) {
        fail("--library takes a file, not ''");
    }
    return std::filesystem::absolute(pathOfText(name));
}

}  // namespace korva::tool
