// One block of planes, as the mixer and a DSP module get it, and the one operation that takes it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace korva::rt {

inline constexpr std::uint32_t blockFrames = 512;

/// A wire record of 32 bytes: its layout is part of the module interface.
struct DspBlock {
    float* const* channels;         ///< Eight planes of `blockFrames` samples, changed in place.
    std::uint32_t maxChannels = 8;  ///< Always 8.
    std::uint32_t maxFrames = blockFrames;
    std::uint32_t inChannels = 0;   ///< Channels of the input stream, at most 8.
    std::uint32_t outChannels = 0;  ///< Channels of the output stream, at most 8.
    std::uint32_t frames = 0;       ///< Frames of this block, 1 to 512.
    std::uint32_t reserved = 0;
};
static_assert(sizeof(DspBlock) == 32);
static_assert(offsetof(DspBlock, channels) == 0);
static_assert(offsetof(DspBlock, maxChannels) == 8);
static_assert(offsetof(DspBlock, maxFrames) == 12);
static_assert(offsetof(DspBlock, inChannels) == 16);
static_assert(offsetof(DspBlock, outChannels) == 20);
static_assert(offsetof(DspBlock, frames) == 24);
static_assert(offsetof(DspBlock, reserved) == 28);

/// All that the real-time path knows of a module's host.
class BlockProcessor {
public:
    /// Works on the planes in place. Planes that no input channel lands on are silence.  [audio, rt]
    virtual void Process(DspBlock* block) noexcept = 0;

protected:
    ~BlockProcessor() = default;
};

}  // namespace korva::rt
