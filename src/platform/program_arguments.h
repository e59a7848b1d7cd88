// What a program was started with.
#pragma once

#include <string>
#include <vector>

namespace korva::platform {

/// The words of the command line in UTF-8, the program's own first, from what `main` was given. On Windows
/// they are the system's, since `main` gets words in an encoding that lacks characters, with patterns
/// replaced by the files that they match.
[[nodiscard]] std::vector<std::string> programArguments(int count, const char* const* given);

}  // namespace korva::platform
