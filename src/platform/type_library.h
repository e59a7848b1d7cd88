// The registration of a type library: where those who know its identifier find its file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/published/base_types.h"

namespace korva::platform {

struct TypeLibrary {
    GUID id;
    std::uint16_t major;
    std::uint16_t minor;
    std::string_view title;
};

/// Writes HKEY_CLASSES_ROOT\TypeLib\{id}\major.minor with the title, and below it the file (a library, or
/// program, that has the type library for its first resource), the file's folder for help, and no flags. A
/// former registration is replaced.
///
/// On Windows the file is read and must hold that type library; the title and the flags are what it says, and
/// interfaces that can travel between processes by it are registered too. Elsewhere nobody reads type
/// libraries: the keys are the same, and the file is not looked at.  [any, blocks]
[[nodiscard]] HRESULT registerTypeLibrary(const TypeLibrary& library, const std::filesystem::path& file);

/// The path of that key, below HKEY_CLASSES_ROOT; and of the one below it whose default value is the file.
/// [any]
[[nodiscard]] std::string typeLibraryKey(const TypeLibrary& library);
[[nodiscard]] std::string typeLibraryFileKey(const TypeLibrary& library);

/// Takes that back, and the keys that are left empty by it, up to that of the identifier. 0 also if it isn't
/// registered.  [any, blocks]
[[nodiscard]] HRESULT unregisterTypeLibrary(const TypeLibrary& library);

}  // namespace korva::platform
