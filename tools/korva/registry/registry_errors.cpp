#include "korva/registry/registry_errors.h"

#include "korva/errors.h"
#include "platform/registry_words.h"

namespace korva::tool {
namespace {

namespace result = platform::registry_result;

/// `{}` is the registry's place.
const char* wordsFor(platform::RegistryResult code) {
    switch (code) {
        case result::notFound:
            return "it is not there";
        case result::accessDenied:
            return platform::registryWords().noRight;
        case result::invalidParameter:
            return "a name is not UTF-8 or too long (255 characters for a part of a key, 16383 for a value), or the "
                   "key is deeper than 512 parts";
        case result::outOfMemory:
            return "out of memory";
        case result::diskFull:
            return "the disk of the registry '{}' is full; make room there";
        case result::busy:
            return "another program has kept the registry '{}' locked for over 5 seconds; try again when it is "
                   "done";
        case result::isLink:
            return "the key points at another one, which is not followed";
        case result::corrupt:
            return "the registry '{}' is damaged; put a copy in its place, or move it away to begin anew";
        case result::ioFailed:
            return "the registry '{}' can't be read or written there; set KORVA_REGISTRY to another file";
        case result::notRegistryFile:
            return "'{}' is no registry and is left alone; set KORVA_REGISTRY to another file";
        case result::keyDeleted:
            return "it was deleted meanwhile";
        case result::newerFile:
            return "the registry '{}' was made by a newer version of korva; use that one";
        default:
            return nullptr;
    }
}

}  // namespace

std::string registryMessage(platform::RegistryResult code) {
    const char* const words = wordsFor(code);
    if (words == nullptr) {
        return fmt::format("the registry '{}' gives error {}", platform::registryPlace(), code);
    }
    return fmt::format(fmt::runtime(words), platform::registryPlace());
}

void throwIfRefused(platform::RegistryResult code, const std::string& action) {
    if (code != result::success) {
        fail("cannot {}: {}", action, registryMessage(code));
    }
}

}  // namespace korva::tool
