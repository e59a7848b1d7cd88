// The texts of a library that has no resources.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace korva::platform {

struct TextResource {
    std::uint16_t number;
    std::string_view text;
};

/// All that the library has. The build makes its definition of the texts' files.
extern const std::span<const TextResource> textResources;

}  // namespace korva::platform
