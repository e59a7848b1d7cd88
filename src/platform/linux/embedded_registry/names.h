// Names of keys and values, and paths of keys.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korva::platform::embedded {

inline constexpr std::size_t longestKeyName = 255;      ///< UTF-16 units.
inline constexpr std::size_t longestValueName = 16383;  ///< The same.
inline constexpr std::size_t deepestKey = 512;          ///< Keys from a root down, without the root.

/// A name as somebody wrote it, and the form in which it is looked for.
struct Name {
    std::string written;
    std::string folded;
};

/// The names on the way from a key to one below it; none for the key itself.
using Path = std::vector<Name>;

/// Nothing for a name that is too long, is no UTF-8 or has a zero in it.  [any]
[[nodiscard]] std::optional<std::string> foldedName(std::string_view name, std::size_t longest);

/// A path's parts. One backslash may end it; nothing if any part is empty or no name, or it is too
/// deep.  [any]
[[nodiscard]] std::optional<Path> splitPath(std::string_view path);

}  // namespace korva::platform::embedded
