#include "rt/engine_format.h"

#include <bit>

namespace korva::rt {
namespace {

std::uint32_t lowestBits(std::uint32_t mask, std::int32_t count) {
    std::uint32_t kept = 0;
    for (std::int32_t taken = 0; taken < count && mask != 0; ++taken) {
        const std::uint32_t lowest = mask & (~mask + 1);
        kept |= lowest;
        mask &= ~lowest;
    }
    return kept;
}

}  // namespace

void EngineFormat::Assign(std::uint32_t rate, std::int32_t count, std::uint32_t mask) noexcept {
    sampleRate = rate;
    channelCount = count;
    SetMask(mask);
    const int speakers = std::popcount(mask);
    if (speakers < count) {
        SetDefaultMask();
    } else if (speakers > count) {
        channelMask = lowestBits(mask, count);
    }
}

void EngineFormat::SetMask(std::uint32_t mask) noexcept {
    channelMask = mask;
    planeOfChannel.fill(0);
    speakerOfPlane.fill(0);
    std::size_t channel = 0;
    for (; mask != 0 && channel < planeOfChannel.size(); ++channel) {
        const int bit = std::countr_zero(mask);
        const Plane plane = planeOfBit(bit);
        planeOfChannel[channel] = plane;
        speakerOfPlane[plane] = static_cast<std::uint8_t>(bit + 1);
        mask &= mask - 1;
    }
}

void EngineFormat::SetDefaultMask() noexcept {
    if (const std::uint32_t mask = defaultSpeakerMask(channelCount); mask != 0) {
        SetMask(mask);
    }
}

}  // namespace korva::rt
