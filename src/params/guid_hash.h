// Where a GUID goes in a table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/published/base_types.h"

namespace korva::params {

/// The 64-bit FNV-1a hashes of a GUID's two halves, combined.
struct GuidHash {
    [[nodiscard]] std::size_t operator()(const GUID& guid) const noexcept {
        const std::span bytes(reinterpret_cast<const std::uint8_t*>(&guid), sizeof(GUID));
        const std::uint64_t first = fnv1a(bytes.first<8>());
        const std::uint64_t second = fnv1a(bytes.last<8>());
        return (second + (first << 6) + 0x9E3779B97F4A7C15U + (first >> 2)) ^ first;
    }

private:
    static std::uint64_t fnv1a(std::span<const std::uint8_t, 8> bytes) noexcept {
        std::uint64_t hash = 0xCBF29CE484222325U;
        for (const std::uint8_t byte : bytes) {
            hash = (hash ^ byte) * 0x100000001B3U;
        }
        return hash;
    }
};

}  // namespace korva::params
