#include "rt/stereo_shapes.h"

#include <array>
#include <bit>
#include <cstddef>

#include "rt/realtime.h"

namespace korva::rt {
namespace {

using PlaneMap = std::array<std::uint8_t, planeCount>;
using Halves = std::array<std::uint32_t, 2>;

/// A layout whose channels all lie on their own speakers' planes. The map is compared by halves: the format
/// has just been stored word by word, and a wider load would have to wait for those stores.
struct Shape {
    std::uint32_t mask;
    std::uint32_t channels;
    Halves planes;
    Halves counted;  ///< The bytes of channels that count. Beyond stands what a longer mask has left.

    constexpr Shape(std::uint32_t speakers, std::uint32_t count, const PlaneMap& map)
        : mask(speakers), channels(count), planes(std::bit_cast<Halves>(map)) {
        PlaneMap used{};
        for (std::uint32_t c = 0; c < count; ++c) {
            used[c] = 0xFF;
        }
        counted = std::bit_cast<Halves>(used);
    }

    [[nodiscard]] bool fits(const EngineFormat& format, std::uint32_t count) const noexcept {
        if (format.channelMask != mask || count != channels) {
            return false;
        }
        const auto map = std::bit_cast<Halves>(format.planeOfChannel);
        return ((map[0] ^ planes[0]) & counted[0]) == 0 && ((map[1] ^ planes[1]) & counted[1]) == 0;
    }
};

constexpr Shape stereo = {0x3, 2, {FrontLeft, FrontRight}};
constexpr std::array<Shape, 4> inputShapes = {{
    stereo,
    {0x3F, 6, {FrontLeft, FrontRight, FrontCenter, LowFrequency, BackLeft, BackRight}},
    {0x60F, 6, {FrontLeft, FrontRight, FrontCenter, LowFrequency, SideLeft, SideRight}},
    {0x63F, 8, {FrontLeft, FrontRight, FrontCenter, LowFrequency, BackLeft, BackRight, SideLeft, SideRight}},
}};

}  // namespace

KORVA_RT_CODE bool isStereoFold(const EngineFormat& in, std::uint32_t inChannels, const EngineFormat& out,
                                std::uint32_t outChannels) noexcept {
    if (!stereo.fits(out, outChannels)) {
        return false;
    }
    for (const Shape& shape : inputShapes) {
        if (shape.fits(in, inChannels)) {
            return true;
        }
    }
    return false;
}

KORVA_RT_CODE bool isApartOrInPlace(const float* input, std::uint32_t inChannels, const float* output,
                                    std::uint32_t outChannels, std::uint32_t frames) noexcept {
    const auto in = reinterpret_cast<std::uintptr_t>(input);
    const auto out = reinterpret_cast<std::uintptr_t>(output);
    const std::uintptr_t inEnd = in + std::uintptr_t{frames} * inChannels * sizeof(float);
    const std::uintptr_t outEnd = out + std::uintptr_t{frames} * outChannels * sizeof(float);
    return (in == out && outChannels <= inChannels) || outEnd <= in || inEnd <= out;
}

}  // namespace korva::rt
