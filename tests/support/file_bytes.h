// Whole files of a test's own. Paths are UTF-8.
#pragma once

#include <string>

namespace korva::test {

/// Each throws when it fails.
[[nodiscard]] std::string readBytes(const std::string& path);
void writeBytes(const std::string& path, const std::string& bytes);

}  // namespace korva::test
