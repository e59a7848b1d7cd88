// The records of the module interface and those of the real-time path: the same bytes under two names, since
// neither header may need the other.
#pragma once

#include <cstddef>

#include "korva/dsp_module.h"
#include "rt/dsp_block.h"
#include "rt/engine_format.h"

namespace korva::engine {

static_assert(sizeof(::EngineFormat) == sizeof(rt::EngineFormat));
static_assert(alignof(::EngineFormat) == alignof(rt::EngineFormat));
static_assert(offsetof(::EngineFormat, channelMask) == offsetof(rt::EngineFormat, channelMask));
static_assert(offsetof(::EngineFormat, channelCount) == offsetof(rt::EngineFormat, channelCount));
static_assert(offsetof(::EngineFormat, sampleRate) == offsetof(rt::EngineFormat, sampleRate));
static_assert(offsetof(::EngineFormat, planeOfChannel) == offsetof(rt::EngineFormat, planeOfChannel));
static_assert(offsetof(::EngineFormat, speakerOfPlane) == offsetof(rt::EngineFormat, speakerOfPlane));

static_assert(sizeof(::DspBlock) == sizeof(rt::DspBlock));
static_assert(alignof(::DspBlock) == alignof(rt::DspBlock));
static_assert(offsetof(::DspBlock, channels) == offsetof(rt::DspBlock, channels));
static_assert(offsetof(::DspBlock, maxChannels) == offsetof(rt::DspBlock, maxChannels));
static_assert(offsetof(::DspBlock, maxFrames) == offsetof(rt::DspBlock, maxFrames));
static_assert(offsetof(::DspBlock, inChannels) == offsetof(rt::DspBlock, inChannels));
static_assert(offsetof(::DspBlock, outChannels) == offsetof(rt::DspBlock, outChannels));
static_assert(offsetof(::DspBlock, frames) == offsetof(rt::DspBlock, frames));
static_assert(offsetof(::DspBlock, reserved) == offsetof(rt::DspBlock, reserved));

static_assert(KORVA_PLANES == rt::planeCount);
static_assert(KORVA_BLOCK_FRAMES == rt::blockFrames);

// The table of an instance: its functions at their indices.
static_assert(offsetof(DspInstance, table) == 0);
static_assert(offsetof(DspInstanceTable, process) == 11 * sizeof(void*));
static_assert(offsetof(DspInstanceTable, capture) == 12 * sizeof(void*));
static_assert(offsetof(DspInstanceTable, isHardwareAvailable) == 13 * sizeof(void*));
static_assert(sizeof(DspInstanceTable) == 14 * sizeof(void*));
static_assert(sizeof(DspByteCount) == 12);

[[nodiscard]] inline ::EngineFormat* asModuleRecord(rt::EngineFormat& format) noexcept {
    return reinterpret_cast<::EngineFormat*>(&format);
}
[[nodiscard]] inline ::DspBlock* asModuleRecord(rt::DspBlock& block) noexcept {
    return reinterpret_cast<::DspBlock*>(&block);
}

}  // namespace korva::engine
