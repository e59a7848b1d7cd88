#include "korva/process/channel_order.h"

#include <sndfile.h>

#include <algorithm>
#include <bit>

#include "korva/process/layouts.h"

namespace korva::tool {
namespace {

enum Speaker : std::uint32_t {
    frontLeft = 0x1,
    frontRight = 0x2,
    frontCenter = 0x4,
    lowFrequency = 0x8,
    backLeft = 0x10,
    backRight = 0x20,
    backCenter = 0x100,
    sideLeft = 0x200,
    sideRight = 0x400,
    backPair = backLeft | backRight,
    sidePair = sideLeft | sideRight
};

/// Position by mask bit, lowest bit first.
constexpr std::array<int, 18> positions = {
    SF_CHANNEL_MAP_LEFT,
    SF_CHANNEL_MAP_RIGHT,
    SF_CHANNEL_MAP_CENTER,
    SF_CHANNEL_MAP_LFE,
    SF_CHANNEL_MAP_REAR_LEFT,
    SF_CHANNEL_MAP_REAR_RIGHT,
    SF_CHANNEL_MAP_FRONT_LEFT_OF_CENTER,
    SF_CHANNEL_MAP_FRONT_RIGHT_OF_CENTER,
    SF_CHANNEL_MAP_REAR_CENTER,
    SF_CHANNEL_MAP_SIDE_LEFT,
    SF_CHANNEL_MAP_SIDE_RIGHT,
    SF_CHANNEL_MAP_TOP_CENTER,
    SF_CHANNEL_MAP_TOP_FRONT_LEFT,
    SF_CHANNEL_MAP_TOP_FRONT_CENTER,
    SF_CHANNEL_MAP_TOP_FRONT_RIGHT,
    SF_CHANNEL_MAP_TOP_REAR_LEFT,
    SF_CHANNEL_MAP_TOP_REAR_CENTER,
    SF_CHANNEL_MAP_TOP_REAR_RIGHT,
};

struct FixedSpeakers {
    std::uint32_t count = 0;
    std::array<std::uint32_t, 8> speakers{};
};

/// By channel count. Opus takes over what Vorbis defines.
constexpr std::array<FixedSpeakers, 9> vorbisSpeakers = {{
    {},
    {1, {frontCenter}},
    {2, {frontLeft, frontRight}},
    {3, {frontLeft, frontCenter, frontRight}},
    {4, {frontLeft, frontRight, backLeft, backRight}},
    {5, {frontLeft, frontCenter, frontRight, backLeft, backRight}},
    {6, {frontLeft, frontCenter, frontRight, backLeft, backRight, lowFrequency}},
    {7, {frontLeft, frontCenter, frontRight, sideLeft, sideRight, backCenter, lowFrequency}},
    {8, {frontLeft, frontCenter, frontRight, sideLeft, sideRight, backLeft, backRight, lowFrequency}},
}};
constexpr std::array<FixedSpeakers, 9> flacSpeakers = {{
    {},
    {1, {frontCenter}},
    {2, {frontLeft, frontRight}},
    {3, {frontLeft, frontRight, frontCenter}},
    {4, {frontLeft, frontRight, backLeft, backRight}},
    {5, {frontLeft, frontRight, frontCenter, backLeft, backRight}},
    {6, {frontLeft, frontRight, frontCenter, lowFrequency, backLeft, backRight}},
    {7, {frontLeft, frontRight, frontCenter, lowFrequency, backCenter, sideLeft, sideRight}},
    {8, {frontLeft, frontRight, frontCenter, lowFrequency, backLeft, backRight, sideLeft, sideRight}},
}};

std::uint32_t maskOf(std::span<const std::uint32_t> speakers) {
    std::uint32_t mask = 0;
    for (const std::uint32_t speaker : speakers) {
        mask |= speaker;
    }
    return mask;
}

/// The place of `speaker` among `speakers`, which has it.
std::uint8_t placeOf(std::uint32_t speaker, std::span<const std::uint32_t> speakers) {
    return static_cast<std::uint8_t>(std::ranges::find(speakers, speaker) - speakers.begin());
}

ChannelOrder orderBetween(std::uint32_t mask, std::span<const std::uint32_t> speakers) {
    ChannelOrder order{.mask = mask};
    for (std::size_t channel = 0; mask != 0; mask &= mask - 1, ++channel) {
        order.fileChannel[channel] = placeOf(mask & (~mask + 1), speakers);
    }
    return order;
}

}  // namespace

std::uint32_t speakerOfPosition(int position) {
    switch (position) {
        case SF_CHANNEL_MAP_MONO:
        case SF_CHANNEL_MAP_FRONT_CENTER:
            return frontCenter;
        case SF_CHANNEL_MAP_FRONT_LEFT:
            return frontLeft;
        case SF_CHANNEL_MAP_FRONT_RIGHT:
            return frontRight;
        default: {
            const auto* const found = std::ranges::find(positions, position);
            return found == positions.end() ? 0 : 1u << (found - positions.begin());
        }
    }
}

int positionOfSpeaker(std::uint32_t speaker) {
    return positions[static_cast<std::size_t>(std::countr_zero(speaker))];
}

std::span<const std::uint32_t> fixedSpeakers(int fileFormat, std::uint32_t channels) {
    const int kind = fileFormat & SF_FORMAT_TYPEMASK;
    if (channels > rt::planeCount || (kind != SF_FORMAT_OGG && kind != SF_FORMAT_FLAC)) {
        return {};
    }
    const FixedSpeakers& fixed = (kind == SF_FORMAT_OGG ? vorbisSpeakers : flacSpeakers)[channels];
    return {fixed.speakers.data(), fixed.count};
}

ChannelOrder orderFromFile(std::span<const std::uint32_t> speakers) {
    const std::uint32_t mask = maskOf(speakers);
    const bool eachHasOne = static_cast<std::size_t>(std::popcount(mask)) == speakers.size() &&
                            std::ranges::find(speakers, 0u) == speakers.end();
    return eachHasOne ? orderBetween(mask, speakers) : ChannelOrder{};
}

std::optional<ChannelOrder> orderToFile(std::uint32_t mask, std::span<const std::uint32_t> speakers) {
    const std::uint32_t fileMask = maskOf(speakers);
    if (mask == fileMask) {
        return orderBetween(mask, speakers);
    }
    // Both pairs are the two highest of their masks, so the channels stand in the same places.
    if ((mask & backPair) == 0 && ((mask & ~sidePair) | backPair) == fileMask &&
        (mask & sidePair) == sidePair) {
        return orderBetween(fileMask, speakers);
    }
    return std::nullopt;
}

}  // namespace korva::tool
