// How a command ends without a result.
#pragma once

#include <fmt/core.h>

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace korva::tool {

/// What the user is told, without the prefix that every error has. Names the file or option, and a remedy if
/// there is one.
class ToolError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// A signal asked the tool to stop.
struct Interrupted {
    int signal;
};

template <typename... Args>
[[noreturn]] void fail(fmt::format_string<Args...> text, Args&&... args) {
    throw ToolError(fmt::format(text, std::forward<Args>(args)...));
}

/// The system's words for an error number.
[[nodiscard]] std::string systemMessage(int errorNumber);

/// `text` with its control characters, which a file's name may hold, as \xHH: always one line, on which no
/// terminal acts. Those of two bytes (U+0080 to U+009F) are their second one's number.
[[nodiscard]] std::string asOneLine(std::string_view text);

/// Writes "korva: error: " and `text` as one line to standard error.
void printError(std::string_view text);

/// Writes "korva: " and `text` likewise: what happens, where nothing else would show it.
void printNotice(std::string_view text);

}  // namespace korva::tool
