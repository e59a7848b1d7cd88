#include "params/preset_blob.h"

#include <limits>

namespace korva::params {
namespace {

constexpr std::size_t headBytes = 4;
constexpr std::size_t entryBytes = 4;
constexpr std::size_t largestWord = std::numeric_limits<std::uint16_t>::max();

std::uint16_t wordAt(std::span<const std::byte> bytes, std::size_t at) noexcept {
    return static_cast<std::uint16_t>(std::to_integer<unsigned>(bytes[at]) |
                                      std::to_integer<unsigned>(bytes[at + 1]) << 8);
}

void putWord(std::vector<std::byte>& bytes, std::size_t word) {
    bytes.push_back(static_cast<std::byte>(word));
    bytes.push_back(static_cast<std::byte>(word >> 8));
}

}  // namespace

std::optional<std::span<const std::byte>> takeOverrides(std::span<const std::byte> blob,
                                                        std::span<std::uint32_t> sizes) noexcept {
    if (blob.size() < headBytes) {
        return std::nullopt;
    }
    std::span<const std::byte> rest = blob.subspan(headBytes);
    for (std::uint32_t left = wordAt(blob, 2); left > 0 && rest.size() >= entryBytes; --left) {
        const std::uint16_t position = wordAt(rest, 0);
        if (position < sizes.size()) {
            sizes[position] = wordAt(rest, 2);
        }
        rest = rest.subspan(entryBytes);
    }
    return rest;
}

std::optional<std::span<const std::byte>> takeSlice(std::span<const std::byte>& slices,
                                                    std::uint32_t size) noexcept {
    if (slices.size() < size) {
        return std::nullopt;
    }
    const std::span<const std::byte> slice = slices.first(size);
    slices = slices.subspan(size);
    return slice;
}

std::optional<std::vector<std::byte>> makePresetBlob(std::span<const std::vector<std::byte>> slices,
                                                     std::span<const std::uint32_t> defaultSizes) {
    std::vector<std::byte> entries;
    for (std::size_t position = 0; position < slices.size(); ++position) {
        const std::size_t size = slices[position].size();
        if (size == defaultSizes[position]) {
            continue;
        }
        if (size > largestWord || position > largestWord) {
            return std::nullopt;
        }
        putWord(entries, position);
        putWord(entries, size);
    }
    if (entries.size() / entryBytes > largestWord) {
        return std::nullopt;
    }
    std::vector<std::byte> blob;
    putWord(blob, 0);
    putWord(blob, entries.size() / entryBytes);
    blob.insert(blob.end(), entries.begin(), entries.end());
    for (const std::vector<std::byte>& slice : slices) {
        blob.insert(blob.end(), slice.begin(), slice.end());
    }
    return blob;
}

}  // namespace korva::params
