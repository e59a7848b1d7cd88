// Words of commands as one can paste them.
#pragma once

#include <string>
#include <string_view>

namespace korva::tool {

/// `text` as one word of a command line: as it is where no shell takes it apart, else in double quotes, which
/// all shells know, and where one would still change it in single quotes as POSIX shells have them.  [any]
[[nodiscard]] std::string commandWord(std::string_view text);

}  // namespace korva::tool
