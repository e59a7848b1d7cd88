// The library that this is linked into.
#pragma once

namespace korva::platform {

/// The name that the library was loaded by, which the loader knows it by even if the file was moved or
/// deleted since. Null in a program.  [any]
[[nodiscard]] const char* ownLibraryName() noexcept;

}  // namespace korva::platform
