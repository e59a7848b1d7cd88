#include "platform/type_library.h"

#include <array>
#include <cstdio>

#include "platform/property_key.h"

namespace korva::platform {

std::string typeLibraryKey(const TypeLibrary& library) {
    // Windows writes both numbers in hexadecimal.
    std::array<char, sizeof "\\ffff.ffff"> version{};
    std::snprintf(version.data(), version.size(), "\\%x.%x", unsigned{library.major},
                  unsigned{library.minor});
    return "TypeLib\\" + upperGuidText(library.id) + version.data();
}

std::string typeLibraryFileKey(const TypeLibrary& library) {
    // The language is neutral.
    return typeLibraryKey(library) + "\\0\\win64";
}

}  // namespace korva::platform
