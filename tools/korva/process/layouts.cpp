#include "korva/process/layouts.h"

#include <array>
#include <bit>
#include <charconv>
#include <optional>

#include "korva/errors.h"

namespace korva::tool {
namespace {

struct Layout {
    std::string_view name;
    std::uint32_t mask;
};

constexpr std::array<Layout, 6> layouts = {{
    {"mono", 0x4},
    {"stereo", 0x3},
    {"quad", 0x33},
    {"5.1", 0x3F},
    {"5.1-side", 0x60F},
    {"7.1", 0x63F},
}};

constexpr std::array<std::string_view, rt::planeCount> planeNames = {
    "front left", "front right", "front center", "low frequency",
    "back left",  "back right",  "side left",    "side right"};

std::optional<std::uint64_t> parseHex(std::string_view text) {
    if (!text.starts_with("0x") && !text.starts_with("0X")) {
        return std::nullopt;
    }
    std::uint64_t value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data() + 2, end, value, 16);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

std::uint32_t checkedMask(std::uint64_t mask, std::string_view text) {
    if ((mask & ~std::uint64_t{knownSpeakers}) != 0) {
        fail("--output-layout {} names speakers beyond the known ones, 0x1 to 0x20000", text);
    }
    const int speakers = std::popcount(mask);
    if (speakers < 1 || speakers > static_cast<int>(rt::planeCount)) {
        fail("--output-layout {} names {} speakers; a layout has 1 to 8", text, speakers);
    }
    return static_cast<std::uint32_t>(mask);
}

}  // namespace

std::uint32_t parseLayout(std::string_view text) {
    for (const Layout& layout : layouts) {
        if (layout.name == text) {
            return layout.mask;
        }
    }
    if (const auto mask = parseHex(text)) {
        return checkedMask(*mask, text);
    }
    fail("--output-layout takes mono, stereo, quad, 5.1, 5.1-side, 7.1 or a mask such as 0x3F, not '{}'",
         text);
}

std::string_view layoutName(std::uint32_t mask) {
    for (const Layout& layout : layouts) {
        if (layout.mask == mask) {
            return layout.name;
        }
    }
    return {};
}

std::string describe(const SoundFormat& format) {
    const std::string_view name = layoutName(format.mask);
    return fmt::format("{} channel{}, {} Hz, {}", format.channels, format.channels == 1 ? "" : "s",
                       format.sampleRate,
                       name.empty() ? fmt::format("speakers 0x{:X}", format.mask)
                                    : fmt::format("{} (0x{:X})", name, format.mask));
}

std::string_view planeName(rt::Plane plane) {
    return planeNames[plane];
}

std::vector<rt::Plane> planesOf(std::uint32_t mask) {
    std::uint32_t found = 0;
    for (; mask != 0; mask &= mask - 1) {
        found |= 1u << rt::planeOfBit(std::countr_zero(mask));
    }
    std::vector<rt::Plane> planes;
    for (; found != 0; found &= found - 1) {
        planes.push_back(static_cast<rt::Plane>(std::countr_zero(found)));
    }
    return planes;
}

}  // namespace korva::tool
