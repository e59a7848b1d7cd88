// What a library's file gives to others.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace korva::test {

/// The names that the library exports, in alphabetical order; read from the file. Raises
/// `std::runtime_error` for a file that is no library of this system.
[[nodiscard]] std::vector<std::string> exportedNames(const std::filesystem::path& library);

}  // namespace korva::test
