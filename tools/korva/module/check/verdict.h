// What a check of a module comes to.
#pragma once

#include <fmt/core.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace korva::tool {

enum class Outcome : int {
    passed,
    warning,  ///< Works, at a cost that the author should know.
    skipped,  ///< Couldn't be tried.
    failed,
    crashed
};

struct Verdict {
    Outcome outcome = Outcome::passed;
    std::string reason{};  ///< One line; may be empty for what passed.
};

/// What a check throws to end with that outcome.
struct CheckFailed : std::runtime_error {
    using std::runtime_error::runtime_error;
};
struct CheckSkipped : std::runtime_error {
    using std::runtime_error::runtime_error;
};

template <typename... Args>
[[noreturn]] void failCheck(fmt::format_string<Args...> text, Args&&... args) {
    throw CheckFailed(fmt::format(text, std::forward<Args>(args)...));
}
template <typename... Args>
[[noreturn]] void skipCheck(fmt::format_string<Args...> text, Args&&... args) {
    throw CheckSkipped(fmt::format(text, std::forward<Args>(args)...));
}

}  // namespace korva::tool
