// The fold written down row by row, as an oracle for the versions that run.
#pragma once

#include <cstdint>

namespace korva::test {

/// Folds the eight planes as the two speaker masks say: source by source, sample by sample.
void foldByRows(float* const* planes, std::uint32_t inMask, std::uint32_t outMask, std::uint32_t frames);

/// The mask of the speakers that a set of planes is named for; the lowest plane is in bit 0.
constexpr std::uint32_t maskOfPlanes(std::uint32_t planes) {
    return (planes & 0x3F) | ((planes & 0xC0) << 3);
}

}  // namespace korva::test
