// Texts that a library carries in its file.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace korva::platform {

/// The text that the library, or program, that this is linked into has under `number`; nothing if there is
/// none. Valid as long as the library is loaded.
///
/// On Windows it is the resource of type "REGISTRY" with that number. Elsewhere libraries have no resources,
/// and the texts are compiled in. `korva_resources` of cmake/Resources.cmake makes both of the same files;
/// every library and program that calls this links what it makes.  [any]
[[nodiscard]] std::optional<std::string_view> textResource(std::uint16_t number) noexcept;

}  // namespace korva::platform
