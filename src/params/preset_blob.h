// The bytes of a preset chunk.
//
//     offset  size                what
//     0       2                   not interpreted
//     2       2                   overrideCount
//     4       4 * overrideCount   entries: u16 position within the chunk, u16 size
//     behind  the rest            one slice for each parameter of the chunk, in its order, back to back
//
// Little-endian. A slice has the size of the parameter's default payload unless an entry says otherwise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korva::params {

/// Writes what the entries of `blob` say into `sizes`, which come in with the default sizes, one for each
/// parameter; of several entries for one the last counts, and those past the end are skipped. Gives the bytes
/// of the slices: entries that the blob is too short for are none, and what is left of it are slices. Nothing
/// if the blob has less than 4 bytes.  [any]
[[nodiscard]] std::optional<std::span<const std::byte>> takeOverrides(
    std::span<const std::byte> blob, std::span<std::uint32_t> sizes) noexcept;

/// The next slice, of `size` bytes, which is taken off `slices`. Nothing if there are fewer.  [any]
[[nodiscard]] std::optional<std::span<const std::byte>> takeSlice(std::span<const std::byte>& slices,
                                                                  std::uint32_t size) noexcept;

/// The blob that gives each parameter of a chunk these bytes, with a default size for each; an entry appears
/// only where a size differs from it. Nothing if a size that differs, or its position, doesn't fit an entry's
/// 16 bits.  [any]
[[nodiscard]] std::optional<std::vector<std::byte>> makePresetBlob(
    std::span<const std::vector<std::byte>> slices, std::span<const std::uint32_t> defaultSizes);

}  // namespace korva::params
