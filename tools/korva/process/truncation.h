// Finding out that a sound file ends before it should: the library that reads it just shortens it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace korva::tool {

/// Bytes of sound that a file's header announces, and those that are there: fewer.
struct Shortfall {
    std::uint64_t announcedBytes;
    std::uint64_t presentBytes;
};

/// Reads the library's log of an open file with `frames` frames. None where all the sound is there, even if
/// the file lacks something else at its end. A length that stands for "until the end", as programs write it
/// into a pipe, announces nothing.
[[nodiscard]] std::optional<Shortfall> findShortfall(std::string_view log, std::uint64_t frames);

}  // namespace korva::tool
