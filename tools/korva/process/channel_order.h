// Which speaker each channel of a sound file belongs to, and the way to the published order and back.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace korva::tool {

/// A file's channels against those of a stream in the published order.
struct ChannelOrder {
    std::uint32_t mask = 0;  ///< Speaker bits; 0 where the file names none, or not each channel's.
    std::array<std::uint8_t, 8> fileChannel = {0, 1, 2, 3,
                                               4, 5, 6, 7};  ///< Of the n-th channel of the stream.
};

/// The speaker bit of a position as sound files' channel maps number it; 0 for one that has no bit.
[[nodiscard]] std::uint32_t speakerOfPosition(int position);

/// The other way round, for one of the known speaker bits.
[[nodiscard]] int positionOfSpeaker(std::uint32_t speaker);

/// The speaker bits of a file's channels where its format (a libsndfile format word) fixes them for the
/// count; empty for formats that don't.
[[nodiscard]] std::span<const std::uint32_t> fixedSpeakers(int fileFormat, std::uint32_t channels);

/// The way from a file whose channels have these speaker bits to the published order. A speaker that is
/// there twice, or that is 0, leaves the channels as they are and the mask unknown.
[[nodiscard]] ChannelOrder orderFromFile(std::span<const std::uint32_t> speakers);

/// The way from a stream with `mask` to a file whose channels are fixed to `speakers`; a back pair stands in
/// for a missing side pair. None if the speakers are others.
[[nodiscard]] std::optional<ChannelOrder> orderToFile(std::uint32_t mask,
                                                      std::span<const std::uint32_t> speakers);

}  // namespace korva::tool
